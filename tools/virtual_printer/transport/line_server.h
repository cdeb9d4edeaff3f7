#ifndef VIRTUAL_PRINTER_TRANSPORT_LINE_SERVER_H_
#define VIRTUAL_PRINTER_TRANSPORT_LINE_SERVER_H_

#include <asio.hpp>
#include <memory>
#include <string>

#include "virtual_printer/transport/server.h"

namespace virtual_printer {

// Puts the printer on the line that this system has for a printer beside the machine: a named pipe on Windows, which
// hosts use like a USB printer, and a pseudo terminal elsewhere, which they use like a serial line. Such a line has one
// host at a time. The references must outlive the server.
std::unique_ptr<Server> MakeLineServer(asio::io_context& context, const std::string& name, HostListener& listener);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_LINE_SERVER_H_
