#include "vexoctl/support/connection_watch.h"

#include <windows.h>

#include "vexoctl/console/failure.h"
#include "vexoctl/support/events.h"

namespace vexoctl {

ConnectionWatch::ConnectionWatch(VexoPrinterHandle* handle) : handle_(handle), port_(handle->port) {
  operations_.magic = VEXO_PORT_MAGIC;
  operations_.driver = this;
  operations_.Write = Write;
  operations_.ReadAvailable = ReadAvailable;
  operations_.kind = port_->kind;
  if (IsSocket()) {
    ShortenReads();
  }
  handle_->port = &operations_;
}

ConnectionWatch::~ConnectionWatch() { handle_->port = port_; }

bool ConnectionWatch::IsSocket() const { return port_->kind == VEXO_PORT_NET || port_->kind == VEXO_PORT_BLUETOOTH; }

// Unlike ReadAvailable, a socket's Read notices that the printer has closed the connection, but it waits for data: with
// these limits, for a moment only (0 would mean no limit). Once something has arrived it waits a little longer, because
// the library accepts a report without its end, and the task number would be lost.
void ConnectionWatch::ShortenReads() {
  VexoPortTimeouts timeouts = {};
  Require(port_->GetTimeouts(port_, &timeouts), "cannot read the time limits of the port");
  timeouts.readInterval = 20;
  timeouts.readMultiplier = 0;
  timeouts.readConstant = 1;
  Require(port_->SetTimeouts(port_, timeouts), "cannot set the time limits of the port");
}

int32_t ConnectionWatch::Write(VexoPort* port, const uint8_t* buffer, uint32_t offset, uint32_t length,
                               uint32_t* written) {
  ConnectionWatch& self = *static_cast<ConnectionWatch*>(port->driver);
  const std::lock_guard<std::mutex> guard(self.mutex_);
  const int32_t result = self.port_->Write(self.port_, buffer, offset, length, written);
  if (result == VEXO_OK) {
    self.loss_ = VEXO_OK;
  } else if (result != VEXO_ERROR_IO_WRITE_TIMEOUT) {  // A busy printer is still connected.
    self.PostLoss(result);
  }
  return result;
}

int32_t ConnectionWatch::ReadAvailable(VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
  ConnectionWatch& self = *static_cast<ConnectionWatch*>(port->driver);
  const std::lock_guard<std::mutex> guard(self.mutex_);
  *read = 0;
  if (self.loss_ != VEXO_OK) {
    return self.loss_;
  }
  const int32_t result = self.IsSocket() ? self.ReadFromSocket(buffer, from, to, read)
                                         : self.port_->ReadAvailable(self.port_, buffer, from, to, read);
  if (result != VEXO_OK && result != VEXO_ERROR_IO_READ_TIMEOUT) {
    self.PostLoss(result);
  }
  return result;
}

int32_t ConnectionWatch::ReadFromSocket(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
  const int32_t result = port_->Read(port_, buffer, from, to - from, read);
  if (result == VEXO_OK && *read < to - from) {
    // The port has reconnected. To the printer this is a new host: monitoring has to be switched on again.
    return ERROR_GRACEFUL_DISCONNECT;
  }
  return result;
}

void ConnectionWatch::PostLoss(int32_t code) {
  if (loss_ == VEXO_OK) {
    Event event;
    event.kind = Event::Kind::kConnectionLost;
    event.port_error = code;
    Events().Post(event);
  }
  loss_ = code;
}

}  // namespace vexoctl
