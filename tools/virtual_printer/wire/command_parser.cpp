#include "virtual_printer/wire/command_parser.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace virtual_printer {
namespace {

using namespace std::string_view_literals;

// Only the first two are followed by anything; the others are whole commands.
struct Prefix {
  std::string_view bytes;
  Command::Kind kind;
};

constexpr Prefix kPrefixes[] = {
    {kV1Prefix, Command::Kind::kV1},
    {"\x1D(H"sv, Command::Kind::kGsH},
    {"\x1B\x1C&cl"sv, Command::Kind::kClearTasks},
    {"\x10\x14\x08\x01\x03\x14\x01\x06\x02\x08"sv, Command::Kind::kClearTasksRealTime},
    {kFileModeSwitch, Command::Kind::kFileMode},
    {kLoaderModeSwitch, Command::Kind::kLoaderMode},
    {"\x12"
     "CER"sv,
     Command::Kind::kNetworkDetails},
};

constexpr std::string_view kLineEnd = "\r\n";
// Records have exactly one entry.
constexpr std::uint8_t kRecordCount = 1;

// Prefix and length. Bodies in use have a few bytes; an absurd length means noise in the print data.
constexpr std::size_t kGsHHeaderLength = 5;
constexpr std::size_t kMaxGsHBody = 255;
// The one GS ( H that may have a byte beyond its length, which asks for an answer.
constexpr std::string_view kResetBody = "200";
constexpr std::uint8_t kAnswerWanted = 0x0A;

// Verbs that do not simply end with their line.
constexpr std::string_view kVerbWithRecord = "setkey";
constexpr std::string_view kVerbWithRecordHeader = "getkey";
constexpr std::string_view kVerbWithoutLineEnd = "report";

bool BeginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool MayBeginCommand(std::string_view text) {
  return std::any_of(std::begin(kPrefixes), std::end(kPrefixes),
                     [&](const Prefix& prefix) { return BeginsWith(prefix.bytes, text); });
}

// Returns how many bytes at the end of the stream may begin a command, given that `matched` bytes before the last one
// did. No prefix contains the first byte of a prefix again, so a mismatch can only start a new match, never continue a
// shorter one.
std::size_t MatchedAfter(std::size_t matched, std::string_view stream) {
  for (const std::size_t length : {matched + 1, std::size_t{1}}) {
    if (MayBeginCommand(stream.substr(stream.size() - length))) {
      return length;
    }
  }
  return 0;
}

const Prefix* FindPrefix(std::string_view bytes) {
  const auto* const found = std::find_if(std::begin(kPrefixes), std::end(kPrefixes),
                                         [&](const Prefix& prefix) { return prefix.bytes == bytes; });
  return found != std::end(kPrefixes) ? found : nullptr;
}

Command SplitLine(std::string_view line) {
  Command command;
  const std::size_t blank = line.find(' ');
  command.verb = line.substr(0, blank);
  if (blank != std::string_view::npos) {
    command.arguments = line.substr(blank + 1);
  }
  return command;
}

// Actions of V1 commands start downloads and restart the printer. They have no record, so nothing is held back behind
// them.
bool MayChangeStream(const Command& command) {
  return command.kind == Command::Kind::kFileMode || command.kind == Command::Kind::kLoaderMode ||
         (command.kind == Command::Kind::kV1 && command.verb == "do");
}

}  // namespace

std::string LineText(const Command& command) {
  return Printable(command.arguments.empty() ? command.verb : command.verb + ' ' + command.arguments);
}

std::size_t CommandParser::Feed(const std::uint8_t* data, std::size_t size, std::vector<Frame>& frames) {
  std::size_t consumed = 0;
  stopped_ = false;
  while (consumed < size && !stopped_) {
    ConsumeByte(data[consumed++]);
  }
  if (state_ == State::kPrintData) {
    Emit(Frame::Kind::kPrintData, pending_.size() - matched_);
  }
  frames = std::exchange(frames_, {});
  return consumed;
}

std::vector<Frame> CommandParser::Finish() {
  if (state_ == State::kGsHTrailer) {
    EndCommand();
  }
  Emit(state_ == State::kPrintData ? Frame::Kind::kPrintData : Frame::Kind::kUnfinishedCommand, pending_.size());
  state_ = State::kPrintData;
  matched_ = 0;
  return std::exchange(frames_, {});
}

void CommandParser::ConsumeByte(std::uint8_t byte) {
  switch (state_) {
    case State::kPrintData:
    case State::kLine:
      ConsumeTextByte(byte);
      break;
    case State::kRecord:
      ConsumeRecordByte(byte);
      break;
    case State::kGsH:
      ConsumeGsHByte(byte);
      break;
    case State::kGsHTrailer:
      ConsumeGsHTrailer(byte);
      break;
  }
}

void CommandParser::ConsumeTextByte(std::uint8_t byte) {
  pending_.push_back(byte);
  matched_ = MatchedAfter(matched_, AsText(pending_));
  if (const Prefix* prefix = FindPrefix(AsText(pending_).substr(pending_.size() - matched_))) {
    BeginCommand(prefix->kind);
  } else if (state_ == State::kLine) {
    ContinueLine();
  }
}

void CommandParser::BeginCommand(Command::Kind kind) {
  // A command inside a line means that the host has abandoned the line. The new command must not be lost with it.
  Emit(state_ == State::kLine ? Frame::Kind::kUnfinishedCommand : Frame::Kind::kPrintData, pending_.size() - matched_);
  matched_ = 0;
  command_ = {};
  command_.kind = kind;
  record_start_ = pending_.size();
  switch (kind) {
    case Command::Kind::kV1:
      state_ = State::kLine;
      break;
    case Command::Kind::kGsH:
      state_ = State::kGsH;
      break;
    case Command::Kind::kClearTasks:
    case Command::Kind::kClearTasksRealTime:
    case Command::Kind::kFileMode:
    case Command::Kind::kLoaderMode:
    case Command::Kind::kNetworkDetails:
      EndCommand();
      break;
  }
}

void CommandParser::ContinueLine() {
  if (EndsWith(Line(), kLineEnd) || Line() == kVerbWithoutLineEnd) {
    EndLine();
  } else if (pending_.size() == kMaxLineLength) {
    Emit(Frame::Kind::kOverlongCommand, pending_.size() - matched_);
    state_ = State::kPrintData;
  }
}

void CommandParser::EndLine() {
  std::string_view line = Line();
  if (EndsWith(line, kLineEnd)) {
    line.remove_suffix(kLineEnd.size());
  }
  command_ = SplitLine(line);
  record_start_ = pending_.size();
  if (line == kVerbWithRecord || line == kVerbWithRecordHeader) {
    state_ = State::kRecord;
  } else {
    EndCommand();
  }
}

void CommandParser::ConsumeRecordByte(std::uint8_t byte) {
  if (pending_.size() == record_start_ && byte != kRecordCount) {
    // There is no record. The byte may begin the next command.
    EndCommand();
    ConsumeByte(byte);
    return;
  }
  pending_.push_back(byte);
  if (RecordIsComplete()) {
    EndCommand();
  }
}

bool CommandParser::RecordIsComplete() const {
  const std::size_t received = pending_.size() - record_start_;
  if (received < kRecordHeaderLength) {
    return false;
  }
  const bool has_value = command_.verb == kVerbWithRecord;
  const std::size_t value_length = has_value ? pending_[record_start_ + kRecordHeaderLength - 1] : 0;
  return received == kRecordHeaderLength + value_length;
}

void CommandParser::ConsumeGsHByte(std::uint8_t byte) {
  pending_.push_back(byte);
  if (pending_.size() < kGsHHeaderLength) {
    return;
  }
  const std::size_t length = ReadNumber(&pending_[kGsHHeaderLength - 2], 2);
  if (length > kMaxGsHBody) {
    // Not a command, but the two bytes of the length may begin one.
    const std::uint8_t low = pending_[kGsHHeaderLength - 2];
    const std::uint8_t high = pending_[kGsHHeaderLength - 1];
    pending_.resize(kGsHHeaderLength - 2);
    state_ = State::kPrintData;
    ConsumeByte(low);
    ConsumeByte(high);
    return;
  }
  record_start_ = kGsHHeaderLength;
  if (pending_.size() < kGsHHeaderLength + length) {
    return;
  }
  if (AsText(pending_).substr(kGsHHeaderLength) == kResetBody) {
    state_ = State::kGsHTrailer;
  } else {
    EndCommand();
  }
}

// The printer can wait for this byte as long as it takes: without it, the command is not answered.
void CommandParser::ConsumeGsHTrailer(std::uint8_t byte) {
  if (byte == kAnswerWanted) {
    pending_.push_back(byte);
    EndCommand();
  } else {
    EndCommand();
    ConsumeByte(byte);
  }
}

void CommandParser::EndCommand() {
  command_.record.assign(pending_.begin() + static_cast<std::ptrdiff_t>(record_start_), pending_.end());
  stopped_ = MayChangeStream(command_);
  Emit(Frame::Kind::kCommand, pending_.size(), std::move(command_));
  command_ = {};
  state_ = State::kPrintData;
}

std::string_view CommandParser::Line() const { return AsText(pending_).substr(kV1Prefix.size()); }

void CommandParser::Emit(Frame::Kind kind, std::size_t size, Command command) {
  if (size == 0) {
    return;
  }
  const auto end = pending_.begin() + static_cast<std::ptrdiff_t>(size);
  frames_.push_back({kind, Bytes(pending_.begin(), end), std::move(command)});
  pending_.erase(pending_.begin(), end);
}

}  // namespace virtual_printer
