#ifndef VIRTUAL_PRINTER_TRANSPORT_PIPE_SERVER_H_
#define VIRTUAL_PRINTER_TRANSPORT_PIPE_SERVER_H_

#include <asio.hpp>
#include <memory>
#include <string>

#include "virtual_printer/transport/server.h"

namespace virtual_printer {

// Puts the printer on a named pipe, of which a host reads and writes as it does of a USB printer's device file. A host
// that comes while another one is served is let in when that has gone, so that one which reopens the pipe at once
// always finds it there.
class PipeServer : public Server {
 public:
  // The references must outlive the server.
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
  std::shared_ptr<Pipe> next_;  // For the next host, which may be there already. Null while the server is closed.
  bool next_has_host_ = false;
  bool serving_ = false;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_PIPE_SERVER_H_
