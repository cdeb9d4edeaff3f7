#ifndef VIRTUAL_PRINTER_DOWNLOADS_YMODEM_RECEIVER_H_
#define VIRTUAL_PRINTER_DOWNLOADS_YMODEM_RECEIVER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "virtual_printer/downloads/download_receiver.h"

namespace virtual_printer {

// Takes a file by YModem-1K, in the loader's dialect of it: the host asks first, a CRC comes low byte first, and what
// lies beyond the announced size is acknowledged and thrown away.
class YmodemReceiver : public DownloadReceiver {
 public:
  // A block that lacks bytes for this long is refused.
  static constexpr std::chrono::milliseconds kStall{1000};

  // The faults must outlive the receiver.
  explicit YmodemReceiver(DownloadFaults& faults) : faults_(faults) {}

  Intake Take(const std::uint8_t* data, std::size_t size) override;
  std::optional<std::chrono::milliseconds> Patience(const Bytes&) const override { return kStall; }
  Exchange OnQuiet(const Bytes& incomplete) override;
  std::optional<CompletedDownload> OnReset() override { return std::nullopt; }
  std::string Abandon() override;

 private:
  enum class State { kIdle, kHeader, kData, kClosing, kClosed };

  Intake TakeByte(std::uint8_t byte, const std::string& words, bool expected, DownloadStep::Name step, State next);
  Intake TakeBlock(const std::uint8_t* data, std::size_t size, std::size_t length);
  Exchange JudgeHeader(const std::uint8_t* block);
  Exchange JudgeData(const std::uint8_t* block);
  Exchange JudgeClosing(const std::uint8_t* block);
  bool ReadHeader(const std::uint8_t* text);
  void Store(const std::uint8_t* text);

  DownloadFaults& faults_;
  State state_ = State::kIdle;
  std::string name_;
  std::size_t announced_ = 0;
  std::uint32_t blocks_ = 0;  // Taken so far.
  Bytes received_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_YMODEM_RECEIVER_H_
