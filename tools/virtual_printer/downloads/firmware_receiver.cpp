#include "virtual_printer/downloads/firmware_receiver.h"

#include <algorithm>
#include <utility>

#include "virtual_printer/wire/command_parser.h"
#include "virtual_printer/wire/trace_words.h"

namespace virtual_printer {
namespace {

constexpr std::uint8_t kAccepted = 0;
constexpr std::uint8_t kRefused = 1;

std::size_t BodyLength(const std::uint8_t* header) {
  return header[4] | header[5] << 8 | header[6] << 16 | static_cast<std::size_t>(header[7]) << 24;
}

}  // namespace

Intake FirmwareReceiver::Take(const std::uint8_t* data, std::size_t size) {
  if (in_body_) {
    return TakeBody(data, size);
  }
  if (MatchBeginning(data, size, kV1Opening) == Match::kFull) {
    return {Intake::Outcome::kForeign};
  }
  return size < kHeaderLength ? Intake{Intake::Outcome::kNeedsMore} : TakeHeader(data, size);
}

Intake FirmwareReceiver::TakeHeader(const std::uint8_t* data, std::size_t size) {
  Exchange exchange;
  const std::size_t length = BodyLength(data);
  const std::string part = "part " + std::to_string(image_.parts);
  exchange.received = {HeadOf(data, size), part + ": header, the body has " + CountOfBytes(length)};
  const bool fits = image_.data.size() + kHeaderLength + length <= kMaxDownloadBytes;
  const auto fault = fits ? faults_.Take({DownloadStep::Name::kPackage, image_.parts}) : std::nullopt;
  if (!fits || Refuses(fault)) {
    AddAnswer(exchange, {kRefused}, part + " refused", fault);
    return {Intake::Outcome::kTaken, kHeaderLength, std::move(exchange)};
  }
  segment_.assign(data, data + kHeaderLength);
  generation_ = image_.generation;
  ++image_.parts;
  in_body_ = true;
  body_left_ = length;
  AddAnswer(exchange, {kAccepted}, part + " accepted", fault);
  if (length == 0 && exchange.order == Order::kNone) {
    AnswerBody(exchange);
  }
  return {Intake::Outcome::kTaken, kHeaderLength, std::move(exchange)};
}

Intake FirmwareReceiver::TakeBody(const std::uint8_t* data, std::size_t size) {
  Exchange exchange;
  const std::size_t taken = std::min(size, body_left_);
  segment_.insert(segment_.end(), data, data + taken);
  body_left_ -= taken;
  if (body_left_ == 0) {
    const std::size_t length = segment_.size() - kHeaderLength;
    exchange.received = {HeadOf(segment_.data() + kHeaderLength, length),
                         "part " + std::to_string(image_.parts) + ": body, " + CountOfBytes(length)};
    AnswerBody(exchange);
  }
  return {Intake::Outcome::kTaken, taken, std::move(exchange)};
}

void FirmwareReceiver::AnswerBody(Exchange& exchange) {
  const std::string part = "part " + std::to_string(image_.parts);
  const auto fault = faults_.Take({DownloadStep::Name::kPackage, image_.parts});
  in_body_ = false;
  if (generation_ != image_.generation) {
    AddAnswer(exchange, {kRefused}, part + " refused, its image has been forgotten", fault);
  } else if (Refuses(fault)) {
    image_.Forget();
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
  image_.Forget();
  return completed;
}

// The segments before a broken one are worth nothing without it. Between two segments the host is expected back.
std::string FirmwareReceiver::Abandon() {
  if (!std::exchange(in_body_, false)) {
    return {};
  }
  const std::size_t size = image_.data.size() + segment_.size();
  segment_.clear();
  if (generation_ == image_.generation) {
    image_.Forget();
  }
  return "incomplete firmware forgotten, " + CountOfBytes(size);
}

}  // namespace virtual_printer
