#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "virtual_printer/downloads/download_receiver.h"
#include "virtual_printer/wire/command_parser.h"

namespace virtual_printer {
namespace {

constexpr std::uint8_t kStartRequest = '1';
constexpr std::uint8_t kReady = 'C';
constexpr std::uint8_t kSmallBlock = 0x01;
constexpr std::uint8_t kLargeBlock = 0x02;
constexpr std::uint8_t kEndOfFile = 0x04;
constexpr std::uint8_t kAcknowledged = 0x06;
constexpr std::uint8_t kRefused = 0x15;
constexpr std::uint8_t kEndOfTransfer = '3';

// Kind, number and its complement; then the data, and a CRC.
constexpr std::size_t kBlockHeader = 3;
constexpr std::size_t kBlockFrame = kBlockHeader + 2;
constexpr std::size_t kSmallData = 128;
constexpr std::size_t kLargeData = 1024;

// A block that lacks bytes for this long is refused.
constexpr std::chrono::milliseconds kIncompleteTimeout{1000};

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

// Returns the number of bytes before the next one that may begin something valid.
std::size_t NoiseLength(const std::uint8_t* data, std::size_t size) {
  constexpr std::uint8_t kStarts[] = {kStartRequest, kSmallBlock,    kLargeBlock,
                                      kEndOfFile,    kEndOfTransfer, static_cast<std::uint8_t>(kV1Prefix.front())};
  const auto* const end = std::find_first_of(data + 1, data + size, std::begin(kStarts), std::end(kStarts));
  return static_cast<std::size_t>(end - data);
}

bool IsValid(const std::uint8_t* block, std::size_t data_size) {
  const std::uint8_t* const data = block + kBlockHeader;
  return (block[1] ^ block[2]) == 0xFF && Crc(data, data_size) == ReadNumber(data + data_size, 2);
}

void AddReply(Exchange& exchange, bool valid, const Bytes& good, std::optional<DownloadFaultKind> fault) {
  if (valid && !IsRefusal(fault)) {
    AddAnswer(exchange, good, good.front() == kReady ? "ready" : "acknowledged", fault);
  } else {
    AddAnswer(exchange, {kRefused}, "refused", fault);
  }
}

class YmodemReceiver : public DownloadReceiver {
 public:
  explicit YmodemReceiver(DownloadFaults& faults) : faults_(faults) {}

  ReceiveResult Receive(const std::uint8_t* data, std::size_t size) override;
  std::optional<std::chrono::milliseconds> Timeout(const Bytes&) const override { return kIncompleteTimeout; }
  Exchange OnTimeout(const Bytes& incomplete) override;
  std::optional<CompletedDownload> OnReset() override { return std::nullopt; }
  std::string Abandon() override;

 private:
  enum class State { kIdle, kHeader, kData, kClosing, kClosed };

  ReceiveResult ReceiveByte(std::uint8_t byte, const std::string& description, bool expected, DownloadStep::Name step,
                            State next);
  ReceiveResult ReceiveBlock(const std::uint8_t* data, std::size_t size, std::size_t length);
  Exchange ReceiveHeader(const std::uint8_t* block);
  Exchange ReceiveData(const std::uint8_t* block);
  Exchange ReceiveClosing(const std::uint8_t* block);
  bool ParseHeader(const std::uint8_t* text);
  void Store(const std::uint8_t* text);

  DownloadFaults& faults_;
  State state_ = State::kIdle;
  std::string name_;
  std::size_t announced_ = 0;
  std::uint32_t blocks_ = 0;  // Accepted so far.
  Bytes received_;
};

ReceiveResult YmodemReceiver::Receive(const std::uint8_t* data, std::size_t size) {
  const Match command = MatchPrefix(data, size, kV1Prefix);
  if (command != Match::kNo) {
    return {command == Match::kFull ? ReceiveResult::Outcome::kCommand : ReceiveResult::Outcome::kNeedsMore};
  }
  switch (data[0]) {
    case kStartRequest:
      return ReceiveByte(data[0], "start request", state_ != State::kData && state_ != State::kClosing,
                         DownloadStep::Name::kHandshake, State::kHeader);
    case kSmallBlock:
      return ReceiveBlock(data, size, kSmallData);
    case kLargeBlock:
      return ReceiveBlock(data, size, kLargeData);
    case kEndOfFile:
      return ReceiveByte(data[0], "end of the file",
                         state_ == State::kClosing || (state_ == State::kData && received_.size() == announced_),
                         DownloadStep::Name::kEnd, State::kClosing);
    case kEndOfTransfer:
      if (state_ == State::kClosed) {
        return {ReceiveResult::Outcome::kConsumed, 1, {{{data[0]}, "end of the transfer"}}};
      }
      break;
    default:
      break;
  }
  const std::size_t noise = NoiseLength(data, size);
  Exchange exchange;
  exchange.received = {FirstBytes(data, noise), CountOfBytes(noise) + " that the loader does not expect, ignored"};
  return {ReceiveResult::Outcome::kConsumed, noise, std::move(exchange)};
}

ReceiveResult YmodemReceiver::ReceiveByte(std::uint8_t byte, const std::string& description, bool expected,
                                          DownloadStep::Name step, State next) {
  Exchange exchange;
  exchange.received = {{byte}, description + (expected ? "" : ", out of order")};
  const auto fault = expected ? faults_.Take({step, 0}) : std::nullopt;
  if (expected && !IsRefusal(fault)) {
    state_ = next;
  }
  AddReply(exchange, expected, {byte == kStartRequest ? kReady : kAcknowledged}, fault);
  return {ReceiveResult::Outcome::kConsumed, 1, std::move(exchange)};
}

ReceiveResult YmodemReceiver::ReceiveBlock(const std::uint8_t* data, std::size_t size, std::size_t length) {
  if (size < length + kBlockFrame) {
    return {ReceiveResult::Outcome::kNeedsMore};
  }
  Exchange exchange;
  if (!IsValid(data, length)) {
    exchange.received.text = "block with a wrong CRC or number";
    AddReply(exchange, false, {}, {});
  } else if (length == kLargeData) {
    exchange = ReceiveData(data);
  } else if (state_ == State::kHeader) {
    exchange = ReceiveHeader(data);
  } else {
    exchange = ReceiveClosing(data);
  }
  exchange.received.bytes = FirstBytes(data, size);
  return {ReceiveResult::Outcome::kConsumed, length + kBlockFrame, std::move(exchange)};
}

Exchange YmodemReceiver::ReceiveHeader(const std::uint8_t* block) {
  Exchange exchange;
  const bool valid = block[1] == 0 && ParseHeader(block + kBlockHeader);
  exchange.received.text =
      valid ? "header block: " + Printable(name_) + ", " + CountOfBytes(announced_) : "header block without a file";
  const auto fault = valid ? faults_.Take({DownloadStep::Name::kHeader, 0}) : std::nullopt;
  if (valid && !IsRefusal(fault)) {
    state_ = State::kData;
    blocks_ = 0;
    received_.clear();
  }
  AddReply(exchange, valid, {kAcknowledged, kReady}, fault);
  return exchange;
}

// The header holds the name and the size in decimal, each terminated by a zero byte.
bool YmodemReceiver::ParseHeader(const std::uint8_t* text) {
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

Exchange YmodemReceiver::ReceiveData(const std::uint8_t* block) {
  Exchange exchange;
  const auto number_of = [](std::uint32_t index) { return static_cast<std::uint8_t>(index + 1); };
  const bool repeated = blocks_ > 0 && block[1] == number_of(blocks_ - 1);
  const bool valid = state_ == State::kData && (repeated || block[1] == number_of(blocks_));
  if (!valid) {
    exchange.received.text = "data block out of order";
    AddReply(exchange, false, {}, {});
    return exchange;
  }
  const std::uint32_t index = repeated ? blocks_ - 1 : blocks_;
  const bool beyond = !repeated && received_.size() == announced_;
  exchange.received.text = "data block " + std::to_string(index) + (repeated ? ", repeated" : "") +
                           (beyond ? ", beyond the announced size" : "");
  const auto fault = faults_.Take({DownloadStep::Name::kPackage, index});
  if (!repeated && !IsRefusal(fault)) {
    Store(block + kBlockHeader);
  }
  AddReply(exchange, true, {kAcknowledged}, fault);
  return exchange;
}

void YmodemReceiver::Store(const std::uint8_t* text) {
  const std::size_t size = std::min(kLargeData, announced_ - received_.size());
  received_.insert(received_.end(), text, text + size);
  ++blocks_;
}

Exchange YmodemReceiver::ReceiveClosing(const std::uint8_t* block) {
  Exchange exchange;
  const std::uint8_t* const text = block + kBlockHeader;
  const bool empty = std::all_of(text, text + kSmallData, [](std::uint8_t byte) { return byte == 0; });
  const bool again = state_ == State::kClosed;
  const bool valid = block[1] == 0 && empty && (again || state_ == State::kClosing);
  exchange.received.text = valid ? "closing block" : "block out of order";
  const auto fault = valid ? faults_.Take({DownloadStep::Name::kClosing, 0}) : std::nullopt;
  if (valid && !again && !IsRefusal(fault)) {
    state_ = State::kClosed;
    exchange.completed = CompletedDownload{DownloadKind::kYmodem, name_, std::exchange(received_, {})};
  }
  AddReply(exchange, valid, {kAcknowledged}, fault);
  return exchange;
}

Exchange YmodemReceiver::OnTimeout(const Bytes& incomplete) {
  Exchange exchange;
  exchange.received = {FirstBytes(incomplete.data(), incomplete.size()),
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

}  // namespace

std::unique_ptr<DownloadReceiver> MakeYmodemReceiver(DownloadFaults& faults) {
  return std::make_unique<YmodemReceiver>(faults);
}

}  // namespace virtual_printer
