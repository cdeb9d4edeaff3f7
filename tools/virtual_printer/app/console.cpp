#include "virtual_printer/app/console.h"

#include <functional>
#include <iostream>
#include <mutex>
#include <optional>
#include <utility>

namespace virtual_printer {

// Shared with the thread, which may outlive the console.
struct Console::LineReader {
  LineReader(asio::io_context& io_context, std::function<void(const std::string&)> line_handler)
      : context(&io_context), on_line(std::move(line_handler)) {}

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

  // Returns whether the input has ended already.
  bool Stop() {
    const std::lock_guard<std::mutex> lock(mutex);
    context = nullptr;
    return ended;
  }

  std::mutex mutex;
  asio::io_context* context;  // Null once the console is gone.
  const std::function<void(const std::string&)> on_line;
  bool ended = false;
};

Console::Console(asio::io_context& context, PrinterService& service, std::chrono::milliseconds split_pause,
                 std::ostream& out)
    : context_(context),
      service_(service),
      split_pause_(split_pause),
      out_(out),
      reader_(std::make_shared<LineReader>(context, [this](const std::string& line) { OnLine(line); })),
      thread_([reader = reader_] { reader->ReadLines(); }) {}

Console::~Console() {
  if (reader_->Stop()) {
    thread_.join();
  } else {
    thread_.detach();
  }
}

void Console::OnLine(const std::string& line) {
  std::string error;
  if (const std::optional<ConsoleCommand> command = ParseConsoleLine(line, &error)) {
    Execute(*command);
  } else if (!error.empty()) {
    out_ << error << std::endl;
  }
}

void Console::Execute(const ConsoleCommand& command) {
  PrinterModel& model = service_.Model();
  const auto task = static_cast<TaskNumber>(command.number);  // In range for the commands that take a task number.
  switch (command.kind) {
    case ConsoleCommand::Kind::kStart:
      service_.Send(model.AnnounceStart(task));
      break;
    case ConsoleCommand::Kind::kEnd:
      service_.Send(model.AnnounceEnd(task, command.value));
      break;
    case ConsoleCommand::Kind::kState:
      service_.Send(model.AnnounceState(task));
      break;
    case ConsoleCommand::Kind::kStatus:
      model.SetStatus(command.number);
      break;
    case ConsoleCommand::Kind::kGarbage:
      service_.Send(model.SendToAll({Garbage(command.number), "garbage, " + CountOfBytes(command.number)}));
      break;
    case ConsoleCommand::Kind::kSplit:
      service_.Faults().split_pause = command.on ? std::optional(split_pause_) : std::nullopt;
      break;
    case ConsoleCommand::Kind::kSilent:
      service_.Faults().silent = command.on;
      break;
    case ConsoleCommand::Kind::kDrop:
      service_.DropAll();
      break;
    case ConsoleCommand::Kind::kHelp:
      out_ << ConsoleHelp() << std::flush;
      break;
    case ConsoleCommand::Kind::kQuit:
      context_.stop();
      break;
  }
}

}  // namespace virtual_printer
