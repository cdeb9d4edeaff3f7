#include "virtual_printer/downloads/package_receiver.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

#include "virtual_printer/wire/command_parser.h"
#include "virtual_printer/wire/trace_words.h"

namespace virtual_printer {
namespace {

constexpr std::string_view kMagic = "\xDD\xCC\xBB\xAA";
constexpr std::string_view kEndOfFont = "^END";
constexpr std::string_view kCommands[] = {kV1Opening, kFileModeSwitch, kLoaderModeSwitch};

constexpr std::size_t kEchoLength = 8;
constexpr std::uint8_t kAccepted = 0;
constexpr std::uint8_t kRefused = 1;

std::uint16_t Sum(const std::uint8_t* data, std::size_t size) {
  return static_cast<std::uint16_t>(std::accumulate(data, data + size, std::uint32_t{0}));
}

std::uint32_t LittleEndian(const std::uint8_t* data, std::size_t size) {
  std::uint32_t value = 0;
  while (size > 0) {
    value = value << 8 | data[--size];
  }
  return value;
}

std::uint32_t IndexOf(const std::uint8_t* package) { return LittleEndian(package + 4, 4); }
std::size_t CountOf(const std::uint8_t* package) { return LittleEndian(package + 8, 2); }

bool HasMagic(const std::uint8_t* data, std::size_t size) { return MatchBeginning(data, size, kMagic) == Match::kFull; }

bool ChecksumIsRight(const std::uint8_t* package, std::size_t size) {
  return LittleEndian(package + size - 2, 2) == Sum(package, size - 2);
}

Match MatchCommand(const std::uint8_t* data, std::size_t size) {
  Match best = Match::kNo;
  for (const std::string_view command : kCommands) {
    best = std::max(best, MatchBeginning(data, size, command));
  }
  return best;
}

// Whether the bytes may follow a package.
bool MayFollow(const std::uint8_t* data, std::size_t size) {
  return size == 0 || MatchBeginning(data, size, kMagic) != Match::kNo ||
         MatchBeginning(data, size, kEndOfFont) != Match::kNo || MatchCommand(data, size) != Match::kNo;
}

Bytes AnswerTo(const std::uint8_t* package, std::size_t size, std::uint8_t result,
               std::optional<DownloadFaultKind> fault) {
  Bytes answer(package, package + std::min(size, kEchoLength));
  answer.resize(kEchoLength);
  if (fault == DownloadFaultKind::kWrongEcho) {
    ++answer[4];
  }
  std::uint16_t sum = Sum(answer.data(), kEchoLength);
  if (fault == DownloadFaultKind::kBadChecksum) {
    ++sum;
  }
  for (const int byte : {int{result}, 0, sum & 0xFF, sum >> 8}) {
    answer.push_back(static_cast<std::uint8_t>(byte));
  }
  return answer;
}

}  // namespace

PackageReceiver::PackageReceiver(DownloadKind kind, DownloadFaults& faults)
    : kind_(kind), faults_(faults), data_area_(kind == DownloadKind::kFile ? kFileDataArea : 0) {}

Intake PackageReceiver::Take(const std::uint8_t* data, std::size_t size) {
  const Match command = MatchCommand(data, size);
  const Match end = kind_ == DownloadKind::kFont ? MatchBeginning(data, size, kEndOfFont) : Match::kNo;
  if (command == Match::kFull) {
    return {Intake::Outcome::kForeign};
  }
  if (end == Match::kFull) {
    return {Intake::Outcome::kTaken, kEndOfFont.size(), TakeEnd()};
  }
  if (command == Match::kPartial || end == Match::kPartial) {
    return {Intake::Outcome::kNeedsMore};
  }
  const bool known = data_area_ != 0 || LearnDataArea(data, size);
  // No package is longer than the largest, known or not; what is, is none.
  const std::size_t length = kFrameLength + (known ? data_area_ : kMaxDataArea);
  if (size < length) {
    return {Intake::Outcome::kNeedsMore};
  }
  return {Intake::Outcome::kTaken, length, Judge(data, length)};
}

bool PackageReceiver::LearnDataArea(const std::uint8_t* data, std::size_t size) {
  if (size < kHeadLength || !HasMagic(data, size)) {
    return false;
  }
  const std::size_t count = CountOf(data);
  const std::size_t length = count + kFrameLength;
  if (count == 0 || size < length || !ChecksumIsRight(data, length) || !MayFollow(data + length, size - length)) {
    return false;
  }
  data_area_ = count;
  return true;
}

std::optional<std::chrono::milliseconds> PackageReceiver::Patience(const Bytes& incomplete) const {
  const std::size_t size = incomplete.size();
  const bool may_be_complete =
      data_area_ == 0 && size >= kHeadLength && size >= CountOf(incomplete.data()) + kFrameLength;
  return may_be_complete ? kQuiet : kStall;
}

Exchange PackageReceiver::OnQuiet(const Bytes& incomplete) {
  const std::uint8_t* const data = incomplete.data();
  const std::size_t size = incomplete.size();
  if (data_area_ == 0 && size > kFrameLength && HasMagic(data, size) && ChecksumIsRight(data, size)) {
    data_area_ = size - kFrameLength;
  }
  return Judge(data, size);
}

Exchange PackageReceiver::Judge(const std::uint8_t* package, std::size_t size) {
  Exchange exchange;
  const std::string error = FindError(package, size);
  const bool readable = size > kFrameLength && HasMagic(package, size);
  const std::string words = readable
                                ? "package " + std::to_string(IndexOf(package)) + ", " + CountOfBytes(CountOf(package))
                                : CountOfBytes(size);
  exchange.received = {HeadOf(package, size), Name() + " " + words};
  if (!error.empty()) {
    exchange.received.text += ", " + error;
    AddAnswer(exchange, AnswerTo(package, size, kRefused, {}), "package refused", {});
    return exchange;
  }

  const std::uint32_t index = IndexOf(package);
  const std::string number = "package " + std::to_string(index);
  const auto fault = faults_.Take({DownloadStep::Name::kPackage, index});
  if (fault == DownloadFaultKind::kRefuse) {
    AddAnswer(exchange, AnswerTo(package, size, kRefused, {}), number + " refused", fault);
    return exchange;
  }
  if (index == next_index_) {
    received_.insert(received_.end(), package + kHeadLength, package + kHeadLength + CountOf(package));
    ++next_index_;
  } else {
    exchange.received.text += ", repeated";
  }
  AddAnswer(exchange, AnswerTo(package, size, kAccepted, fault), number + " acknowledged", fault);
  return exchange;
}

// What is wrong with the package; empty for a sound one.
std::string PackageReceiver::FindError(const std::uint8_t* package, std::size_t size) const {
  if (size != data_area_ + kFrameLength || size == kFrameLength) {
    return "incomplete";
  }
  if (!HasMagic(package, size)) {
    return "no package";
  }
  if (!ChecksumIsRight(package, size)) {
    return "wrong checksum";
  }
  const std::size_t count = CountOf(package);
  if (count == 0 || count > data_area_) {
    return "wrong count";
  }
  const std::uint32_t index = IndexOf(package);
  const bool repeated = next_index_ > 0 && index == next_index_ - 1;
  if (ended_ || (index != next_index_ && !repeated)) {
    return "out of order";
  }
  return received_.size() + count > kMaxDownloadBytes ? "too much" : "";
}

Exchange PackageReceiver::TakeEnd() {
  Exchange exchange;
  exchange.received = {Bytes(kEndOfFont.begin(), kEndOfFont.end()), "end of the font"};
  if (!received_.empty()) {
    exchange.completed = CompletedDownload{kind_, {}, std::exchange(received_, {})};
    ended_ = true;
  }
  return exchange;
}

std::optional<CompletedDownload> PackageReceiver::OnReset() {
  if (kind_ != DownloadKind::kFile || received_.empty()) {
    return std::nullopt;
  }
  return CompletedDownload{kind_, {}, std::exchange(received_, {})};
}

std::string PackageReceiver::Abandon() {
  const std::size_t size = std::exchange(received_, {}).size();
  return size == 0 ? std::string() : "incomplete " + Name() + " forgotten, " + CountOfBytes(size);
}

}  // namespace virtual_printer
