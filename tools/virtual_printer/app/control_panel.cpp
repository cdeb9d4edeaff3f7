#include "virtual_printer/app/control_panel.h"

#include <optional>

#include "virtual_printer/model/task_number.h"
#include "virtual_printer/wire/trace_words.h"

namespace virtual_printer {

void ControlPanel::OnLine(const std::string& line) {
  std::string complaint;
  if (const std::optional<ConsoleCommand> command = ParseConsoleLine(line, &complaint)) {
    Execute(*command);
  } else if (!complaint.empty()) {
    Say(complaint + "\n");
  }
}

void ControlPanel::Execute(const ConsoleCommand& command) {
  PrinterModel& model = service_.Model();
  const auto task = static_cast<TaskNumber>(command.number);  // Where it is one, it was found small enough.
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
      service_.CurrentFaults().split_pause = command.on ? std::optional(split_pause_) : std::nullopt;
      break;
    case ConsoleCommand::Kind::kSilent:
      service_.CurrentFaults().silent = command.on;
      break;
    case ConsoleCommand::Kind::kDrop:
      service_.DropAll();
      break;
    case ConsoleCommand::Kind::kHelp:
      Say(ConsoleHelp());
      break;
    case ConsoleCommand::Kind::kQuit:
      context_.stop();
      break;
  }
}

void ControlPanel::Say(const std::string& text) { out_ << text << std::flush; }

}  // namespace virtual_printer
