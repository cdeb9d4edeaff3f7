#include "virtual_printer/wire/command_parser.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace virtual_printer {
namespace {

using namespace std::string_view_literals;

// What a command begins with. All but the first two consist of nothing else.
struct Opening {
  std::string_view bytes;
  Command::Kind kind;
};

constexpr Opening kOpenings[] = {
    {kV1Opening, Command::Kind::kV1},
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
// The only record form there is: one that holds one entry.
constexpr std::uint8_t kRecordCount = 1;

// Opening and length. The bodies in use are a few bytes; an absurd length is noise in the print data.
constexpr std::size_t kGsHHeaderLength = 5;
constexpr std::size_t kMaxGsHBody = 255;
// The one GS ( H that may be followed by a byte beyond its length: the one that asks for an answer.
constexpr std::string_view kResetBody = "200";
constexpr std::uint8_t kAnswerWanted = 0x0A;

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

std::string_view AsText(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

bool BeginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

bool EndsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool MayBecomeACommand(std::string_view text) {
  return std::any_of(std::begin(kOpenings), std::end(kOpenings),
                     [&](const Opening& opening) { return BeginsWith(opening.bytes, text); });
}

// How much of the end of the stream may be an opening, when all but its last byte matched this much before. No opening
// holds the first byte of one again, so a mismatch can only begin a new match, never continue a shorter one.
std::size_t MatchedAfter(std::size_t matched, std::string_view stream) {
  for (const std::size_t length : {matched + 1, std::size_t{1}}) {
    if (MayBecomeACommand(stream.substr(stream.size() - length))) {
      return length;
    }
  }
  return 0;
}

const Opening* FindOpening(std::string_view bytes) {
  const auto* const found = std::find_if(std::begin(kOpenings), std::end(kOpenings),
                                         [&](const Opening& opening) { return opening.bytes == bytes; });
  return found != std::end(kOpenings) ? found : nullptr;
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

// The actions among the V1 commands switch to downloads, and restart the printer. None of them has a tail, so nothing
// is held back behind them.
bool MayChangeTheStream(const Command& command) {
  return command.kind == Command::Kind::kFileMode || command.kind == Command::Kind::kLoaderMode ||
         (command.kind == Command::Kind::kV1 && command.verb == "do");
}

}  // namespace

std::size_t CommandParser::Feed(const std::uint8_t* data, std::size_t size, std::vector<Frame>& frames) {
  std::size_t taken = 0;
  stopped_ = false;
  while (taken < size && !stopped_) {
    TakeByte(data[taken++]);
  }
  if (state_ == State::kPrintData) {
    Emit(Frame::Kind::kPrintData, pending_.size() - matched_);
  }
  frames = std::exchange(frames_, {});
  return taken;
}

std::vector<Frame> CommandParser::Finish() {
  if (state_ == State::kGsHTail) {
    EndCommand();
  }
  Emit(state_ == State::kPrintData ? Frame::Kind::kPrintData : Frame::Kind::kUnfinishedCommand, pending_.size());
  state_ = State::kPrintData;
  matched_ = 0;
  return std::exchange(frames_, {});
}

void CommandParser::TakeByte(std::uint8_t byte) {
  switch (state_) {
    case State::kPrintData:
    case State::kLine:
      TakeTextByte(byte);
      break;
    case State::kRecord:
      TakeRecordByte(byte);
      break;
    case State::kGsH:
      TakeGsHByte(byte);
      break;
    case State::kGsHTail:
      TakeGsHTail(byte);
      break;
  }
}

void CommandParser::TakeTextByte(std::uint8_t byte) {
  pending_.push_back(byte);
  matched_ = MatchedAfter(matched_, AsText(pending_));
  if (const Opening* opening = FindOpening(AsText(pending_).substr(pending_.size() - matched_))) {
    BeginCommand(opening->kind);
  } else if (state_ == State::kLine) {
    ContinueLine();
  }
}

void CommandParser::BeginCommand(Command::Kind kind) {
  // A command inside a line means that the host gave the line up: its new command must not be lost with the old one.
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

void CommandParser::TakeGsHByte(std::uint8_t byte) {
  pending_.push_back(byte);
  if (pending_.size() < kGsHHeaderLength) {
    return;
  }
  const std::uint8_t low = pending_[kGsHHeaderLength - 2];
  const std::uint8_t high = pending_[kGsHHeaderLength - 1];
  const std::size_t length = low + 256U * high;
  if (length > kMaxGsHBody) {
    // No command at all, then; and what stood for the length may begin one.
    pending_.resize(kGsHHeaderLength - 2);
    state_ = State::kPrintData;
    TakeByte(low);
    TakeByte(high);
    return;
  }
  record_start_ = kGsHHeaderLength;
  if (pending_.size() < kGsHHeaderLength + length) {
    return;
  }
  if (AsText(pending_).substr(kGsHHeaderLength) == kResetBody) {
    state_ = State::kGsHTail;
  } else {
    EndCommand();
  }
}

// Whether the byte belongs to the command can only be told when it is there, be it much later. The printer loses
// nothing by waiting: without this byte the command is not answered.
void CommandParser::TakeGsHTail(std::uint8_t byte) {
  if (byte == kAnswerWanted) {
    pending_.push_back(byte);
    EndCommand();
  } else {
    EndCommand();
    TakeByte(byte);
  }
}

void CommandParser::EndCommand() {
  command_.record.assign(pending_.begin() + static_cast<std::ptrdiff_t>(record_start_), pending_.end());
  stopped_ = MayChangeTheStream(command_);
  Emit(Frame::Kind::kCommand, pending_.size(), std::move(command_));
  command_ = {};
  state_ = State::kPrintData;
}

std::string_view CommandParser::LineText() const { return AsText(pending_).substr(kV1Opening.size()); }

void CommandParser::Emit(Frame::Kind kind, std::size_t size, Command command) {
  if (size == 0) {
    return;
  }
  const auto end = pending_.begin() + static_cast<std::ptrdiff_t>(size);
  frames_.push_back({kind, Bytes(pending_.begin(), end), std::move(command)});
  pending_.erase(pending_.begin(), end);
}

}  // namespace virtual_printer
