#ifndef VIRTUAL_PRINTER_DOWNLOADS_FIRMWARE_RECEIVER_H_
#define VIRTUAL_PRINTER_DOWNLOADS_FIRMWARE_RECEIVER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "virtual_printer/downloads/download_receiver.h"

namespace virtual_printer {

// What the loader has of a firmware image: whole segments. It outlives connections: a host brings each segment by a new
// one.
struct FirmwareImage {
  void Forget() {
    data.clear();
    parts = 0;
    ++generation;
  }

  Bytes data;
  std::uint32_t parts = 0;       // Headers and bodies.
  std::uint32_t generation = 0;  // A segment that was begun before the image was forgotten is none of the next one.
};

// Takes the segments of a firmware image, each a header that holds the length of the body, and the body. Each part is
// answered by a byte.
class FirmwareReceiver : public DownloadReceiver {
 public:
  static constexpr std::size_t kHeaderLength = 76;

  // The references must outlive the receiver.
  FirmwareReceiver(FirmwareImage& image, DownloadFaults& faults) : image_(image), faults_(faults) {}

  Intake Take(const std::uint8_t* data, std::size_t size) override;
  std::optional<std::chrono::milliseconds> Patience(const Bytes&) const override { return std::nullopt; }
  Exchange OnQuiet(const Bytes&) override { return {}; }
  std::optional<CompletedDownload> OnReset() override;
  std::string Abandon() override;

 private:
  Intake TakeHeader(const std::uint8_t* data, std::size_t size);
  Intake TakeBody(const std::uint8_t* data, std::size_t size);
  void AnswerBody(Exchange& exchange);

  FirmwareImage& image_;
  DownloadFaults& faults_;
  bool in_body_ = false;
  Bytes segment_;  // The one under way, with its header.
  std::size_t body_left_ = 0;
  std::uint32_t generation_ = 0;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_FIRMWARE_RECEIVER_H_
