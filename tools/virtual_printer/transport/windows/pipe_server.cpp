#include <asio.hpp>
// asio includes winsock2.h, which must precede windows.h.
#include <windows.h>

#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "virtual_printer/transport/server.h"

namespace virtual_printer {
namespace {

constexpr char kPipeFolder[] = "\\\\.\\pipe\\";
constexpr DWORD kBufferSize = 65536;

std::error_code SystemError(DWORD error) { return {static_cast<int>(error), asio::error::get_system_category()}; }

// A named pipe, which hosts read and write like the device file of a USB printer. A second host can open the pipe and
// is served when the first one has gone, so a host that closes and reopens the pipe at once always finds it.
class PipeServer : public Server {
 public:
  PipeServer(asio::io_context& context, const std::string& name, HostListener& listener);

  void Open(PrinterMode mode) override;
  void Close() override;
  std::string Place(PrinterMode /*mode*/) const override { return path_; }

 private:
  using Pipe = asio::windows::stream_handle;

  std::shared_ptr<Pipe> MakePipe(DWORD more_flags);
  void Await(std::shared_ptr<Pipe> pipe);
  void OnConnected(const std::shared_ptr<Pipe>& pipe, const std::error_code& error);
  void ServeNext();

  asio::io_context& context_;
  const std::string path_;
  HostListener& listener_;
  std::shared_ptr<Pipe> next_;  // For the next host, which may be connected already. Null while the server is closed.
  bool next_has_host_ = false;
  bool serving_ = false;
};

PipeServer::PipeServer(asio::io_context& context, const std::string& name, HostListener& listener)
    : context_(context), path_(kPipeFolder + name), listener_(listener) {}

void PipeServer::Open(PrinterMode /*mode*/) {
  // Without this flag, two printers could share the pipe, each getting some of the hosts.
  Await(MakePipe(FILE_FLAG_FIRST_PIPE_INSTANCE));
}

void PipeServer::Close() {
  if (next_) {
    std::error_code ignored;
    next_->close(ignored);
    next_.reset();
  }
}

std::shared_ptr<PipeServer::Pipe> PipeServer::MakePipe(DWORD more_flags) {
  const HANDLE handle =
      CreateNamedPipeA(path_.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | more_flags,
                       PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
                       PIPE_UNLIMITED_INSTANCES, kBufferSize, kBufferSize, /*nDefaultTimeOut=*/0, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    const DWORD error = GetLastError();
    // This is the error for a second printer of the same name.
    throw std::system_error(error == ERROR_ACCESS_DENIED ? make_error_code(asio::error::address_in_use)
                                                         : SystemError(error));
  }
  return std::make_shared<Pipe>(context_, handle);
}

void PipeServer::Await(std::shared_ptr<Pipe> pipe) {
  next_ = std::move(pipe);
  next_has_host_ = false;
  asio::windows::overlapped_ptr connecting(
      context_, [this, pipe = next_](const std::error_code& error, std::size_t) { OnConnected(pipe, error); });
  const BOOL connected = ConnectNamedPipe(next_->native_handle(), connecting.get());
  const DWORD error = connected != FALSE ? ERROR_SUCCESS : GetLastError();
  if (error == ERROR_SUCCESS || error == ERROR_IO_PENDING) {
    connecting.release();
  } else {
    // A host may have connected before the call.
    connecting.complete(error == ERROR_PIPE_CONNECTED ? std::error_code() : SystemError(error), 0);
  }
}

void PipeServer::OnConnected(const std::shared_ptr<Pipe>& pipe, const std::error_code& error) {
  if (pipe != next_) {
    return;  // The server has been closed.
  }
  if (error) {
    // The host left at once. Its pipe instance must be replaced.
    Await(MakePipe(0));
    return;
  }
  next_has_host_ = true;
  if (!serving_) {
    ServeNext();
  }
}

void PipeServer::ServeNext() {
  serving_ = true;
  auto stream = std::make_unique<DeviceStream<Pipe>>(std::move(*next_));
  Await(MakePipe(0));
  listener_.OnHost(std::move(stream), path_, [this] {
    serving_ = false;
    if (next_ && next_has_host_) {
      ServeNext();
    }
  });
}

}  // namespace

std::unique_ptr<Server> MakeLineServer(asio::io_context& context, const std::string& name, HostListener& listener) {
  return std::make_unique<PipeServer>(context, name, listener);
}

}  // namespace virtual_printer
