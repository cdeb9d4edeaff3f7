#include "virtual_printer/downloads/ymodem_receiver.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "virtual_printer/wire/command_parser.h"
#include "virtual_printer/wire/trace_words.h"

namespace virtual_printer {
namespace {

constexpr std::uint8_t kStartRequest = '1';
constexpr std::uint8_t kReady = 'C';
constexpr std::uint8_t kSmallBlock = 0x01;
constexpr std::uint8_t kLargeBlock = 0x02;
constexpr std::uint8_t kEndOfFile = 0x04;
constexpr std::uint8_t kAcknowledged = 0x06;
constexpr std::uint8_t kRefused = 0x15;
constexpr std::uint8_t kEndOfSession = '3';

// Kind, number and its complement; then the data, and a CRC.
constexpr std::size_t kBlockHead = 3;
constexpr std::size_t kBlockFrame = kBlockHead + 2;
constexpr std::size_t kSmallData = 128;
constexpr std::size_t kLargeData = 1024;

std::uint16_t Crc(const std::uint8_t* data, std::size_t size) {
  constexpr unsigned kPolynomial = 0x1021;
  unsigned crc = 0;
  for (std::size_t i = 0; i < size; ++i) {
    crc ^= static_cast<unsigned>(data[i]) << 8;
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc & 0x8000U) != 0 ? crc << 1 ^ kPolynomial : crc << 1;
    }
  }
  return static_cast<std::uint16_t>(crc);
}

// Bytes up to the next one with which something sound may begin.
std::size_t NoiseLength(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint8_t kBeginnings[] = {kStartRequest, kSmallBlock,   kLargeBlock,
                                          kEndOfFile,    kEndOfSession, static_cast<std::uint8_t>(kV1Opening.front())};
  const auto* const end = std::find_first_of(data + 1, data + size, std::begin(kBeginnings), std::end(kBeginnings));
  return static_cast<std::size_t>(end - data);
}

bool IsSound(const std::uint8_t* block, std::size_t data_size) {
  const std::uint8_t* const stored = block + kBlockHead + data_size;
  return (block[1] ^ block[2]) == 0xFF && Crc(block + kBlockHead, data_size) == (stored[0] | stored[1] << 8);
}

void AddReply(Exchange& exchange, bool sound, const Bytes& good, std::optional<DownloadFaultKind> fault) {
  if (sound && !Refuses(fault)) {
    AddAnswer(exchange, good, good.front() == kReady ? "ready" : "acknowledged", fault);
  } else {
    AddAnswer(exchange, {kRefused}, "refused", fault);
  }
}

}  // namespace

Intake YmodemReceiver::Take(const std::uint8_t* data, std::size_t size) {
  const Match command = MatchBeginning(data, size, kV1Opening);
  if (command != Match::kNo) {
    return {command == Match::kFull ? Intake::Outcome::kForeign : Intake::Outcome::kNeedsMore};
  }
  switch (data[0]) {
    case kStartRequest:
      return TakeByte(data[0], "start request", state_ != State::kData && state_ != State::kClosing,
                      DownloadStep::Name::kHandshake, State::kHeader);
    case kSmallBlock:
      return TakeBlock(data, size, kSmallData);
    case kLargeBlock:
      return TakeBlock(data, size, kLargeData);
    case kEndOfFile:
      return TakeByte(data[0], "end of the file",
                      state_ == State::kClosing || (state_ == State::kData && received_.size() == announced_),
                      DownloadStep::Name::kEnd, State::kClosing);
    case kEndOfSession:
      if (state_ == State::kClosed) {
        return {Intake::Outcome::kTaken, 1, {{{data[0]}, "end of the session"}}};
      }
      break;
    default:
      break;
  }
  const std::size_t noise = NoiseLength(data, size);
  Exchange exchange;
  exchange.received = {HeadOf(data, noise), CountOfBytes(noise) + " that the loader does not expect, ignored"};
  return {Intake::Outcome::kTaken, noise, std::move(exchange)};
}

Intake YmodemReceiver::TakeByte(std::uint8_t byte, const std::string& words, bool expected, DownloadStep::Name step,
                                State next) {
  Exchange exchange;
  exchange.received = {{byte}, words + (expected ? "" : ", out of order")};
  const auto fault = expected ? faults_.Take({step, 0}) : std::nullopt;
  if (expected && !Refuses(fault)) {
    state_ = next;
  }
  AddReply(exchange, expected, {byte == kStartRequest ? kReady : kAcknowledged}, fault);
  return {Intake::Outcome::kTaken, 1, std::move(exchange)};
}

Intake YmodemReceiver::TakeBlock(const std::uint8_t* data, std::size_t size, std::size_t length) {
  if (size < length + kBlockFrame) {
    return {Intake::Outcome::kNeedsMore};
  }
  Exchange exchange;
  if (!IsSound(data, length)) {
    exchange.received.text = "block with a wrong CRC or number";
    AddReply(exchange, false, {}, {});
  } else if (length == kLargeData) {
    exchange = JudgeData(data);
  } else if (state_ == State::kHeader) {
    exchange = JudgeHeader(data);
  } else {
    exchange = JudgeClosing(data);
  }
  exchange.received.bytes = HeadOf(data, size);
  return {Intake::Outcome::kTaken, length + kBlockFrame, std::move(exchange)};
}

Exchange YmodemReceiver::JudgeHeader(const std::uint8_t* block) {
  Exchange exchange;
  const bool sound = block[1] == 0 && ReadHeader(block + kBlockHead);
  exchange.received.text =
      sound ? "header block: " + Printable(name_) + ", " + CountOfBytes(announced_) : "header block without a file";
  const auto fault = sound ? faults_.Take({DownloadStep::Name::kHeader, 0}) : std::nullopt;
  if (sound && !Refuses(fault)) {
    state_ = State::kData;
    blocks_ = 0;
    received_.clear();
  }
  AddReply(exchange, sound, {kAcknowledged, kReady}, fault);
  return exchange;
}

// The name, and the size in decimal, each with a zero byte behind it.
bool YmodemReceiver::ReadHeader(const std::uint8_t* text) {
  const char* const begin = reinterpret_cast<const char*>(text);
  const char* const end = begin + kSmallData;
  const char* const name_end = std::find(begin, end, '\0');
  if (name_end == begin || name_end == end) {
    return false;
  }
  std::size_t size = 0;
  const auto result = std::from_chars(name_end + 1, end, size);
  if (result.ec != std::errc() || result.ptr == end || *result.ptr != '\0' || size > kMaxDownloadBytes) {
    return false;
  }
  name_.assign(begin, name_end);
  announced_ = size;
  return true;
}

Exchange YmodemReceiver::JudgeData(const std::uint8_t* block) {
  Exchange exchange;
  const auto number_of = [](std::uint32_t index) { return static_cast<std::uint8_t>(index + 1); };
  const bool repeated = blocks_ > 0 && block[1] == number_of(blocks_ - 1);
  const bool sound = state_ == State::kData && (repeated || block[1] == number_of(blocks_));
  if (!sound) {
    exchange.received.text = "data block out of order";
    AddReply(exchange, false, {}, {});
    return exchange;
  }
  const std::uint32_t index = repeated ? blocks_ - 1 : blocks_;
  const bool beyond = !repeated && received_.size() == announced_;
  exchange.received.text = "data block " + std::to_string(index) + (repeated ? ", repeated" : "") +
                           (beyond ? ", beyond the announced size" : "");
  const auto fault = faults_.Take({DownloadStep::Name::kPackage, index});
  if (!repeated && !Refuses(fault)) {
    Store(block + kBlockHead);
  }
  AddReply(exchange, true, {kAcknowledged}, fault);
  return exchange;
}

void YmodemReceiver::Store(const std::uint8_t* text) {
  const std::size_t size = std::min(kLargeData, announced_ - received_.size());
  received_.insert(received_.end(), text, text + size);
  ++blocks_;
}

Exchange YmodemReceiver::JudgeClosing(const std::uint8_t* block) {
  Exchange exchange;
  const std::uint8_t* const text = block + kBlockHead;
  const bool empty = std::all_of(text, text + kSmallData, [](std::uint8_t byte) { return byte == 0; });
  const bool again = state_ == State::kClosed;
  const bool sound = block[1] == 0 && empty && (again || state_ == State::kClosing);
  exchange.received.text = sound ? "closing block" : "block out of order";
  const auto fault = sound ? faults_.Take({DownloadStep::Name::kClosing, 0}) : std::nullopt;
  if (sound && !again && !Refuses(fault)) {
    state_ = State::kClosed;
    exchange.completed = CompletedDownload{DownloadKind::kYmodem, name_, std::exchange(received_, {})};
  }
  AddReply(exchange, sound, {kAcknowledged}, fault);
  return exchange;
}

Exchange YmodemReceiver::OnQuiet(const Bytes& incomplete) {
  Exchange exchange;
  exchange.received = {HeadOf(incomplete.data(), incomplete.size()),
                       "incomplete block, " + CountOfBytes(incomplete.size())};
  AddReply(exchange, false, {}, {});
  return exchange;
}

std::string YmodemReceiver::Abandon() {
  const bool incomplete = state_ == State::kData || state_ == State::kClosing;
  state_ = State::kIdle;
  const std::size_t size = std::exchange(received_, {}).size();
  return incomplete ? "incomplete file forgotten, " + CountOfBytes(size) : std::string();
}

}  // namespace virtual_printer
