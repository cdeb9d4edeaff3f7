#ifndef VIRTUAL_PRINTER_APP_CONSOLE_H_
#define VIRTUAL_PRINTER_APP_CONSOLE_H_

#include <asio.hpp>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace virtual_printer {

// Reads standard input line by line, on a thread of its own: it is the one way that works alike for a terminal, a pipe
// and a file, on every system.
class Console {
 public:
  // Each line is handed over on the thread of the io_context, which must outlive the console. The end of the input
  // ends nothing else.
  Console(asio::io_context& context, std::function<void(const std::string&)> on_line);

  // The thread may be waiting for a line that never comes. It is then left to the end of the program, and what it
  // still reads goes nowhere.
  ~Console();

  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

 private:
  struct Shared;

  std::shared_ptr<Shared> shared_;
  std::thread reader_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_CONSOLE_H_
