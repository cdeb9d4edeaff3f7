#include "vexoctl/watched_port.h"

#include <windows.h>

#include "vexo/error.h"
#include "vexoctl/failure.h"
#include "vexoctl/news.h"

namespace vexoctl {

WatchedPort::WatchedPort(VexoPrinterHandle* handle) : handle_(handle), port_(handle->port) {
  entries_.magic = VEXO_PORT_MAGIC;
  entries_.driver = this;
  entries_.Write = Write;
  entries_.ReadAvailable = ReadAvailable;
  entries_.kind = port_->kind;
  if (IsSocket()) {
    ShortenReads();
  }
  handle_->port = &entries_;
}

WatchedPort::~WatchedPort() { handle_->port = port_; }

bool WatchedPort::IsSocket() const { return port_->kind == VEXO_PORT_NET || port_->kind == VEXO_PORT_BLUETOOTH; }

// A socket's Read, unlike its ReadAvailable, notices that the printer has closed the connection, but it waits for what
// has not arrived yet: for a moment only, with these limits (0 would mean none). When something has arrived, it is
// worth waiting a little longer: the library takes a report whose end is missing as it is, and the task number would be
// lost.
void WatchedPort::ShortenReads() {
  VexoPortTimeouts timeouts = {};
  Require(port_->GetTimeouts(port_, &timeouts), "cannot read the time limits of the port");
  timeouts.readInterval = 20;
  timeouts.readMultiplier = 0;
  timeouts.readConstant = 1;
  Require(port_->SetTimeouts(port_, timeouts), "cannot set the time limits of the port");
}

int32_t WatchedPort::Write(VexoPort* port, const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) {
  WatchedPort& self = *static_cast<WatchedPort*>(port->driver);
  const std::lock_guard<std::mutex> guard(self.mutex_);
  const int32_t result = self.port_->Write(self.port_, buffer, offset, length, written);
  if (result == VEXO_OK) {
    self.loss_ = VEXO_OK;
  } else if (result != VEXO_ERROR_IO_WRITE_TIMEOUT) {  // A printer that is busy is still there.
    self.NoteLoss(result);
  }
  return result;
}

int32_t WatchedPort::ReadAvailable(VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
  WatchedPort& self = *static_cast<WatchedPort*>(port->driver);
  const std::lock_guard<std::mutex> guard(self.mutex_);
  *read = 0;
  if (self.loss_ != VEXO_OK) {
    return self.loss_;
  }
  const int32_t result = self.IsSocket() ? self.ReadFromSocket(buffer, from, to, read)
                                         : self.port_->ReadAvailable(self.port_, buffer, from, to, read);
  if (result != VEXO_OK && result != VEXO_ERROR_IO_READ_TIMEOUT) {
    self.NoteLoss(result);
  }
  return result;
}

int32_t WatchedPort::ReadFromSocket(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
  const int32_t result = port_->Read(port_, buffer, from, to - from, read);
  if (result == VEXO_OK && *read < to - from) {
    // The port has connected again by itself. To the printer that is a new host: it has to be asked for events anew.
    return ERROR_GRACEFUL_DISCONNECT;
  }
  return result;
}

void WatchedPort::NoteLoss(int32_t code) {
  if (loss_ == VEXO_OK) {
    News news;
    news.kind = News::Kind::kConnectionLost;
    news.code = code;
    AllNews().Post(news);
  }
  loss_ = code;
}

}  // namespace vexoctl
