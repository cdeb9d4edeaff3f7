#include <algorithm>
#include <numeric>
#include <utility>

#include "virtual_printer/downloads/download_receiver.h"
#include "virtual_printer/wire/command_parser.h"

namespace virtual_printer {
namespace {

constexpr std::string_view kMagic = "\xDD\xCC\xBB\xAA";
constexpr std::string_view kEndOfFont = "^END";
constexpr std::string_view kCommands[] = {kV1Prefix, kFileModeSwitch, kLoaderModeSwitch};

// Magic, index and count; then the data area, and a checksum.
constexpr std::size_t kHeaderLength = 10;
constexpr std::size_t kFrameLength = 12;
constexpr std::size_t kMaxDataArea = kMaxPackageSize - kFrameLength;
constexpr std::size_t kFileDataArea = 2048;
constexpr std::size_t kEchoLength = 8;

// A pause this long ends a package of unknown size...
constexpr std::chrono::milliseconds kUnknownSizeTimeout{100};
// ...and one that lacks bytes.
constexpr std::chrono::milliseconds kIncompleteTimeout{1000};

constexpr std::uint8_t kAccepted = 0;
constexpr std::uint8_t kRefused = 1;

std::uint16_t Sum(const std::uint8_t* data, std::size_t size) {
  return static_cast<std::uint16_t>(std::accumulate(data, data + size, std::uint32_t{0}));
}

std::uint32_t IndexOf(const std::uint8_t* package) { return ReadNumber(package + 4, 4); }
std::size_t CountOf(const std::uint8_t* package) { return ReadNumber(package + 8, 2); }

bool HasMagic(const std::uint8_t* data, std::size_t size) { return MatchPrefix(data, size, kMagic) == Match::kFull; }

bool HasRightChecksum(const std::uint8_t* package, std::size_t size) {
  return ReadNumber(package + size - 2, 2) == Sum(package, size - 2);
}

Match MatchCommand(const std::uint8_t* data, std::size_t size) {
  Match best = Match::kNo;
  for (const std::string_view command : kCommands) {
    best = std::max(best, MatchPrefix(data, size, command));
  }
  return best;
}

// Whether the bytes may come behind a package.
bool MayFollow(const std::uint8_t* data, std::size_t size) {
  return size == 0 || MatchPrefix(data, size, kMagic) != Match::kNo ||
         MatchPrefix(data, size, kEndOfFont) != Match::kNo || MatchCommand(data, size) != Match::kNo;
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
  AppendNumber(result, 2, answer);
  AppendNumber(sum, 2, answer);
  return answer;
}

// The host of a font chooses the size of its packages and does not announce it. The first package shows it: it is full,
// so its checksum follows as many bytes as it says to hold. If it is short because it is the only one, its checksum
// comes last before a pause.
class PackageReceiver : public DownloadReceiver {
 public:
  PackageReceiver(DownloadKind kind, DownloadFaults& faults);

  ReceiveResult Receive(const std::uint8_t* data, std::size_t size) override;
  std::optional<std::chrono::milliseconds> Timeout(const Bytes& incomplete) const override;
  Exchange OnTimeout(const Bytes& incomplete) override;
  std::optional<CompletedDownload> OnReset() override;
  std::string Abandon() override;

 private:
  bool LearnDataArea(const std::uint8_t* data, std::size_t size);
  Exchange ReceivePackage(const std::uint8_t* package, std::size_t size);
  std::string FindError(const std::uint8_t* package, std::size_t size) const;
  Exchange ReceiveEndOfFont();
  std::string Name() const { return kind_ == DownloadKind::kFile ? "file" : "font"; }

  const DownloadKind kind_;
  DownloadFaults& faults_;
  std::size_t data_area_ = 0;  // 0 while it is unknown.
  std::uint32_t next_index_ = 0;
  Bytes received_;
  bool ended_ = false;
};

PackageReceiver::PackageReceiver(DownloadKind kind, DownloadFaults& faults)
    : kind_(kind), faults_(faults), data_area_(kind == DownloadKind::kFile ? kFileDataArea : 0) {}

ReceiveResult PackageReceiver::Receive(const std::uint8_t* data, std::size_t size) {
  const Match command = MatchCommand(data, size);
  const Match end = kind_ == DownloadKind::kFont ? MatchPrefix(data, size, kEndOfFont) : Match::kNo;
  if (command == Match::kFull) {
    return {ReceiveResult::Outcome::kCommand};
  }
  if (end == Match::kFull) {
    return {ReceiveResult::Outcome::kConsumed, kEndOfFont.size(), ReceiveEndOfFont()};
  }
  if (command == Match::kPartial || end == Match::kPartial) {
    return {ReceiveResult::Outcome::kNeedsMore};
  }
  const bool known = data_area_ != 0 || LearnDataArea(data, size);
  // While the size is unknown, whatever exceeds the maximum is no package.
  const std::size_t length = kFrameLength + (known ? data_area_ : kMaxDataArea);
  if (size < length) {
    return {ReceiveResult::Outcome::kNeedsMore};
  }
  return {ReceiveResult::Outcome::kConsumed, length, ReceivePackage(data, length)};
}

bool PackageReceiver::LearnDataArea(const std::uint8_t* data, std::size_t size) {
  if (size < kHeaderLength || !HasMagic(data, size)) {
    return false;
  }
  const std::size_t count = CountOf(data);
  const std::size_t length = count + kFrameLength;
  if (count == 0 || size < length || !HasRightChecksum(data, length) || !MayFollow(data + length, size - length)) {
    return false;
  }
  data_area_ = count;
  return true;
}

std::optional<std::chrono::milliseconds> PackageReceiver::Timeout(const Bytes& incomplete) const {
  const std::size_t size = incomplete.size();
  const bool may_be_complete =
      data_area_ == 0 && size >= kHeaderLength && size >= CountOf(incomplete.data()) + kFrameLength;
  return may_be_complete ? kUnknownSizeTimeout : kIncompleteTimeout;
}

Exchange PackageReceiver::OnTimeout(const Bytes& incomplete) {
  const std::uint8_t* const data = incomplete.data();
  const std::size_t size = incomplete.size();
  if (data_area_ == 0 && size > kFrameLength && HasMagic(data, size) && HasRightChecksum(data, size)) {
    data_area_ = size - kFrameLength;
  }
  return ReceivePackage(data, size);
}

Exchange PackageReceiver::ReceivePackage(const std::uint8_t* package, std::size_t size) {
  Exchange exchange;
  const std::string error = FindError(package, size);
  const bool readable = size > kFrameLength && HasMagic(package, size);
  const std::string description =
      readable ? "package " + std::to_string(IndexOf(package)) + ", " + CountOfBytes(CountOf(package))
               : CountOfBytes(size);
  exchange.received = {FirstBytes(package, size), Name() + " " + description};
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
    received_.insert(received_.end(), package + kHeaderLength, package + kHeaderLength + CountOf(package));
    ++next_index_;
  } else {
    exchange.received.text += ", repeated";
  }
  AddAnswer(exchange, AnswerTo(package, size, kAccepted, fault), number + " acknowledged", fault);
  return exchange;
}

// Returns what is wrong with the package; empty if nothing is.
std::string PackageReceiver::FindError(const std::uint8_t* package, std::size_t size) const {
  if (size != data_area_ + kFrameLength || size == kFrameLength) {
    return "incomplete";
  }
  if (!HasMagic(package, size)) {
    return "no package";
  }
  if (!HasRightChecksum(package, size)) {
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

Exchange PackageReceiver::ReceiveEndOfFont() {
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

}  // namespace

std::unique_ptr<DownloadReceiver> MakePackageReceiver(DownloadKind kind, DownloadFaults& faults) {
  return std::make_unique<PackageReceiver>(kind, faults);
}

}  // namespace virtual_printer
