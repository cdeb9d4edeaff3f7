#include "virtual_printer/command_parser.h"

#include <array>
#include <iterator>
#include <utility>

namespace virtual_printer {
namespace {

constexpr std::array<std::uint8_t, 7> kPrefix = {0x1B, 0x1C, '&', ' ', 'V', '1', ' '};
constexpr std::string_view kLineEnd = "\r\n";
// The only record form there is: one that holds one entry.
constexpr std::uint8_t kRecordCount = 1;

// What follows the line of a verb. A verb without an entry is complete with its line end.
enum class Tail {
  kNothing,       // Not even a line end: the verb alone is the command.
  kRecordHeader,  // A record without a value.
  kRecord,
};

struct VerbForm {
  std::string_view verb;
  Tail tail;
};

constexpr VerbForm kVerbForms[] = {
    {"setkey", Tail::kRecord},
    {"getkey", Tail::kRecordHeader},
    {"report", Tail::kNothing},
};

bool HasTail(std::string_view line, Tail tail) {
  for (const VerbForm& form : kVerbForms) {
    if (form.verb == line) {
      return form.tail == tail;
    }
  }
  return false;
}

// ESC occurs in the prefix only as its first byte, so a mismatch can only begin a new match, never continue a shorter
// one.
std::size_t MatchedAfter(std::size_t matched, std::uint8_t byte) {
  if (byte == kPrefix[matched]) {
    return matched + 1;
  }
  return byte == kPrefix[0] ? 1 : 0;
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

Command SplitLine(std::string_view line) {
  const std::size_t blank = line.find(' ');
  if (blank == std::string_view::npos) {
    return {std::string(line), {}, {}};
  }
  return {std::string(line.substr(0, blank)), std::string(line.substr(blank + 1)), {}};
}

}  // namespace

std::vector<Frame> CommandParser::Feed(const std::uint8_t* data, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    TakeByte(data[i]);
  }
  if (state_ == State::kPrintData) {
    Emit(Frame::Kind::kPrintData, pending_.size() - matched_);
  }
  return std::exchange(frames_, {});
}

std::vector<Frame> CommandParser::Finish() {
  Emit(state_ == State::kPrintData ? Frame::Kind::kPrintData : Frame::Kind::kUnfinishedCommand, pending_.size());
  state_ = State::kPrintData;
  matched_ = 0;
  return std::exchange(frames_, {});
}

void CommandParser::TakeByte(std::uint8_t byte) {
  if (state_ == State::kRecord) {
    TakeRecordByte(byte);
    return;
  }
  pending_.push_back(byte);
  matched_ = MatchedAfter(matched_, byte);
  if (matched_ == kPrefix.size()) {
    BeginCommand();
  } else if (state_ == State::kLine) {
    ContinueLine();
  }
}

void CommandParser::BeginCommand() {
  // A prefix inside a line means that the host gave the line up: its new command must not be lost with the old one.
  Emit(state_ == State::kLine ? Frame::Kind::kUnfinishedCommand : Frame::Kind::kPrintData, pending_.size() - matched_);
  matched_ = 0;
  state_ = State::kLine;
}

void CommandParser::ContinueLine() {
  if (EndsWith(LineText(), kLineEnd) || HasTail(LineText(), Tail::kNothing)) {
    EndLine();
  } else if (pending_.size() == kMaxLineLength) {
    Emit(Frame::Kind::kOverlongCommand, pending_.size() - matched_);
    state_ = State::kPrintData;
  }
}

void CommandParser::EndLine() {
  std::string_view line = LineText();
  if (EndsWith(line, kLineEnd)) {
    line.remove_suffix(kLineEnd.size());
  }
  command_ = SplitLine(line);
  record_start_ = pending_.size();
  if (HasTail(line, Tail::kRecord) || HasTail(line, Tail::kRecordHeader)) {
    state_ = State::kRecord;
  } else {
    EndCommand();
  }
}

void CommandParser::TakeRecordByte(std::uint8_t byte) {
  if (pending_.size() == record_start_ && byte != kRecordCount) {
    // No record here. The byte may well begin the host's next command.
    EndCommand();
    TakeByte(byte);
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
  const bool has_value = HasTail(command_.verb, Tail::kRecord);
  const std::size_t value_length = has_value ? pending_[record_start_ + kRecordHeaderLength - 1] : 0;
  return received == kRecordHeaderLength + value_length;
}

void CommandParser::EndCommand() {
  command_.record.assign(pending_.begin() + static_cast<std::ptrdiff_t>(record_start_), pending_.end());
  Emit(Frame::Kind::kCommand, pending_.size(), std::move(command_));
  command_ = {};
  state_ = State::kPrintData;
}

std::string_view CommandParser::LineText() const {
  const std::string_view pending(reinterpret_cast<const char*>(pending_.data()), pending_.size());
  return pending.substr(kPrefix.size());
}

void CommandParser::Emit(Frame::Kind kind, std::size_t size, Command command) {
  if (size == 0) {
    return;
  }
  const auto end = pending_.begin() + static_cast<std::ptrdiff_t>(size);
  frames_.push_back({kind, Bytes(pending_.begin(), end), std::move(command)});
  pending_.erase(pending_.begin(), end);
}

}  // namespace virtual_printer
