#ifndef VIRTUAL_PRINTER_TRANSPORT_LISTEN_FAILURE_H_
#define VIRTUAL_PRINTER_TRANSPORT_LISTEN_FAILURE_H_

#include <asio.hpp>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace virtual_printer {

// Says where the printer could not listen. The one failure that everybody meets has the same plain words on every
// system.
template <typename Endpoint>
std::runtime_error ListenFailure(const Endpoint& endpoint, const std::error_code& error) {
  std::ostringstream text;
  text << "cannot listen on " << endpoint << ": "
       << (error == asio::error::address_in_use ? "the port is in use" : error.message());
  return std::runtime_error(text.str());
}

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_LISTEN_FAILURE_H_
