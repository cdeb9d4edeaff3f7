#ifndef VIRTUAL_PRINTER_DOWNLOADS_PACKAGE_RECEIVER_H_
#define VIRTUAL_PRINTER_DOWNLOADS_PACKAGE_RECEIVER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "virtual_printer/downloads/download_receiver.h"

namespace virtual_printer {

// Takes a file or a font: numbered packages, each with a checksum, each answered by an echo of its first bytes.
//
// A font's host chooses the size of its packages and does not announce it. The first package tells: it holds as many
// bytes as it says, so its checksum stands behind them; unless it is the only one and short, when its checksum stands
// where the stream goes quiet.
class PackageReceiver : public DownloadReceiver {
 public:
  // Magic, index, count; then the data area, and a checksum.
  static constexpr std::size_t kHeadLength = 10;
  static constexpr std::size_t kFrameLength = 12;
  static constexpr std::size_t kMaxDataArea = 65535;
  static constexpr std::size_t kFileDataArea = 2048;

  // Silence that ends a package of unknown size...
  static constexpr std::chrono::milliseconds kQuiet{100};
  // ...and one that lacks bytes.
  static constexpr std::chrono::milliseconds kStall{1000};

  // For a file or a font. The faults must outlive the receiver.
  PackageReceiver(DownloadKind kind, DownloadFaults& faults);

  Intake Take(const std::uint8_t* data, std::size_t size) override;
  std::optional<std::chrono::milliseconds> Patience(const Bytes& incomplete) const override;
  Exchange OnQuiet(const Bytes& incomplete) override;
  std::optional<CompletedDownload> OnReset() override;
  std::string Abandon() override;

 private:
  bool LearnDataArea(const std::uint8_t* data, std::size_t size);
  Exchange Judge(const std::uint8_t* package, std::size_t size);
  std::string FindError(const std::uint8_t* package, std::size_t size) const;
  Exchange TakeEnd();
  std::string Name() const { return kind_ == DownloadKind::kFile ? "file" : "font"; }

  const DownloadKind kind_;
  DownloadFaults& faults_;
  std::size_t data_area_ = 0;  // 0 while it is unknown.
  std::uint32_t next_index_ = 0;
  Bytes received_;
  bool ended_ = false;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_DOWNLOADS_PACKAGE_RECEIVER_H_
