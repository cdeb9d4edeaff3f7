#ifndef VIRTUAL_PRINTER_APP_CONSOLE_H_
#define VIRTUAL_PRINTER_APP_CONSOLE_H_

#include <asio.hpp>
#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <thread>

#include "virtual_printer/app/console_command.h"
#include "virtual_printer/app/printer_service.h"

namespace virtual_printer {

// Reads commands from standard input and carries them out. A thread reads the lines, which works alike for terminals,
// pipes and files on every system; commands are executed on the thread of the io_context.
class Console {
 public:
  // The references must outlive the console, which must outlive the running of the io_context. The pause is the one
  // that `split on` puts between bytes. The end of the input has no effect.
  Console(asio::io_context& context, PrinterService& service, std::chrono::milliseconds split_pause, std::ostream& out);

  // The thread may be blocked in a read. It is then left to the end of the program, and what it reads is discarded.
  ~Console();

  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

 private:
  struct LineReader;

  void OnLine(const std::string& line);
  void Execute(const ConsoleCommand& command);

  asio::io_context& context_;
  PrinterService& service_;
  const std::chrono::milliseconds split_pause_;
  std::ostream& out_;
  const std::shared_ptr<LineReader> reader_;
  std::thread thread_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_APP_CONSOLE_H_
