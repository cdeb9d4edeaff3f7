#include "virtual_printer/session.h"

#include <optional>
#include <string>
#include <utility>

#include "virtual_printer/trace_words.h"

namespace virtual_printer {

Reaction Session::ReactTo(const Frame& frame, Time now) {
  const std::string length = CountOfBytes(frame.bytes.size());
  switch (frame.kind) {
    case Frame::Kind::kCommand:
      return Execute(frame.command, now);
    case Frame::Kind::kUnfinishedCommand:
      return {"unfinished command, " + length};
    case Frame::Kind::kOverlongCommand:
      return {"command without a line end, " + length};
    case Frame::Kind::kPrintData:
      break;
  }
  state_.print_data_bytes += frame.bytes.size();
  return {"print data, " + length + jobs_.AddPrintData(now)};
}

Reaction Session::Execute(const Command& command, Time now) {
  if (std::optional<Reaction> reaction = settings_.Execute(command)) {
    return *std::move(reaction);
  }
  if (std::optional<Reaction> reaction = jobs_.Execute(command, now)) {
    return *std::move(reaction);
  }
  return {LineText(command) + " (not simulated)"};
}

}  // namespace virtual_printer
