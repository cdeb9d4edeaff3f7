#include <algorithm>
#include <utility>

#include "virtual_printer/downloads/download_receiver.h"
#include "virtual_printer/wire/command_parser.h"

namespace virtual_printer {
namespace {

constexpr std::uint8_t kAccepted = 0;
constexpr std::uint8_t kRefused = 1;

constexpr std::size_t kHeaderLength = 76;
constexpr std::size_t kBodyLengthOffset = 4;

class FirmwareReceiver : public DownloadReceiver {
 public:
  FirmwareReceiver(FirmwareImage& image, DownloadFaults& faults) : image_(image), faults_(faults) {}

  ReceiveResult Receive(const std::uint8_t* data, std::size_t size) override;
  std::optional<std::chrono::milliseconds> Timeout(const Bytes&) const override { return std::nullopt; }
  Exchange OnTimeout(const Bytes&) override { return {}; }
  std::optional<CompletedDownload> OnReset() override;
  std::string Abandon() override;

 private:
  ReceiveResult ReceiveHeader(const std::uint8_t* data, std::size_t size);
  ReceiveResult ReceiveBody(const std::uint8_t* data, std::size_t size);
  void AnswerBody(Exchange& exchange);

  FirmwareImage& image_;
  DownloadFaults& faults_;
  bool in_body_ = false;
  Bytes segment_;  // The segment being received, with its header.
  std::size_t body_left_ = 0;
  std::uint32_t generation_ = 0;
};

ReceiveResult FirmwareReceiver::Receive(const std::uint8_t* data, std::size_t size) {
  if (in_body_) {
    return ReceiveBody(data, size);
  }
  if (MatchPrefix(data, size, kV1Prefix) == Match::kFull) {
    return {ReceiveResult::Outcome::kCommand};
  }
  return size < kHeaderLength ? ReceiveResult{ReceiveResult::Outcome::kNeedsMore} : ReceiveHeader(data, size);
}

ReceiveResult FirmwareReceiver::ReceiveHeader(const std::uint8_t* data, std::size_t size) {
  Exchange exchange;
  const std::size_t length = ReadNumber(data + kBodyLengthOffset, 4);
  const std::string part = "part " + std::to_string(image_.parts);
  exchange.received = {FirstBytes(data, size), part + ": header, the body has " + CountOfBytes(length)};
  const bool fits = image_.data.size() + kHeaderLength + length <= kMaxDownloadBytes;
  const auto fault = fits ? faults_.Take({DownloadStep::Name::kPackage, image_.parts}) : std::nullopt;
  if (!fits || IsRefusal(fault)) {
    AddAnswer(exchange, {kRefused}, part + " refused", fault);
    return {ReceiveResult::Outcome::kConsumed, kHeaderLength, std::move(exchange)};
  }
  segment_.assign(data, data + kHeaderLength);
  generation_ = image_.generation;
  ++image_.parts;
  in_body_ = true;
  body_left_ = length;
  AddAnswer(exchange, {kAccepted}, part + " accepted", fault);
  if (length == 0 && exchange.action == ConnectionAction::kNone) {
    AnswerBody(exchange);
  }
  return {ReceiveResult::Outcome::kConsumed, kHeaderLength, std::move(exchange)};
}

ReceiveResult FirmwareReceiver::ReceiveBody(const std::uint8_t* data, std::size_t size) {
  Exchange exchange;
  const std::size_t taken = std::min(size, body_left_);
  segment_.insert(segment_.end(), data, data + taken);
  body_left_ -= taken;
  if (body_left_ == 0) {
    const std::size_t length = segment_.size() - kHeaderLength;
    exchange.received = {FirstBytes(segment_.data() + kHeaderLength, length),
                         "part " + std::to_string(image_.parts) + ": body, " + CountOfBytes(length)};
    AnswerBody(exchange);
  }
  return {ReceiveResult::Outcome::kConsumed, taken, std::move(exchange)};
}

void FirmwareReceiver::AnswerBody(Exchange& exchange) {
  const std::string part = "part " + std::to_string(image_.parts);
  const auto fault = faults_.Take({DownloadStep::Name::kPackage, image_.parts});
  in_body_ = false;
  if (generation_ != image_.generation) {
    AddAnswer(exchange, {kRefused}, part + " refused, its image has been forgotten", fault);
  } else if (IsRefusal(fault)) {
    image_.Discard();
    AddAnswer(exchange, {kRefused}, part + " refused, the image is forgotten", fault);
  } else {
    ++image_.parts;
    image_.data.insert(image_.data.end(), segment_.begin(), segment_.end());
    AddAnswer(exchange, {kAccepted}, part + " accepted", fault);
  }
  segment_.clear();
}

std::optional<CompletedDownload> FirmwareReceiver::OnReset() {
  if (image_.parts == 0) {
    return std::nullopt;
  }
  CompletedDownload completed{DownloadKind::kFirmware, {}, std::move(image_.data)};
  image_.Discard();
  return completed;
}

// A broken segment makes those before it useless. Between two segments the host is expected to reconnect.
std::string FirmwareReceiver::Abandon() {
  if (!std::exchange(in_body_, false)) {
    return {};
  }
  const std::size_t size = image_.data.size() + segment_.size();
  segment_.clear();
  if (generation_ == image_.generation) {
    image_.Discard();
  }
  return "incomplete firmware forgotten, " + CountOfBytes(size);
}

}  // namespace

std::unique_ptr<DownloadReceiver> MakeFirmwareReceiver(FirmwareImage& image, DownloadFaults& faults) {
  return std::make_unique<FirmwareReceiver>(image, faults);
}

}  // namespace virtual_printer
