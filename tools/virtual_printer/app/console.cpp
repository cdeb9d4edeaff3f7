#include "virtual_printer/app/console.h"

#include <iostream>
#include <mutex>
#include <thread>
#include <utility>

namespace virtual_printer {

// What the thread holds on to; it may outlive the console.
struct Console::Shared {
  std::mutex mutex;
  asio::io_context* context = nullptr;  // Null once the console is gone.
  bool ended = false;                   // There is no more input.
  std::function<void(const std::string&)> on_line;

  void ReadLines() {
    for (std::string line; std::getline(std::cin, line);) {
      const std::lock_guard<std::mutex> lock(mutex);
      if (context == nullptr) {
        return;
      }
      asio::post(*context, [on_line = on_line, line] { on_line(line); });
    }
    const std::lock_guard<std::mutex> lock(mutex);
    ended = true;
  }
};

Console::Console(asio::io_context& context, std::function<void(const std::string&)> on_line)
    : shared_(std::make_shared<Shared>()) {
  shared_->context = &context;
  shared_->on_line = std::move(on_line);
  reader_ = std::thread([shared = shared_] { shared->ReadLines(); });
}

Console::~Console() {
  bool ended = false;
  {
    const std::lock_guard<std::mutex> lock(shared_->mutex);
    shared_->context = nullptr;
    ended = shared_->ended;
  }
  if (ended) {
    reader_.join();
  } else {
    reader_.detach();
  }
}

}  // namespace virtual_printer
