/**
 * @file download.hpp
 * Downloads for C++ hosts: files, fonts and firmware into the printer. Part of printer.hpp.
 */
#ifndef VEXO_DOWNLOAD_HPP_
#define VEXO_DOWNLOAD_HPP_

#include <cstdint>
#include <exception>
#include <functional>
#include <string>

#include "vexo/error.hpp"
#include "vexo/extend.h"

namespace vexo {

/** Called with the progress of a download, 0 to 100 percent, on the thread that called the download. */
using ProgressListener = std::function<void(int32_t percentage)>;

/**
 * The downloads into a printer, as a base of its class (Printer). One at a time in a process; setCancel cancels it. An
 * exception of the listener cancels the download and then leaves the function.
 */
template <typename Printer>
class PrinterDownloads {
 public:
  /** In packages that the printer confirms; the printer restarts afterwards. */
  void DownloadFile(const std::string& path, const ProgressListener& progress = nullptr,
                    std::error_code* error = nullptr) {
    Download("download a file", progress, error,
             [&](auto report) { return ::downloadFile(target(), path.c_str(), nullptr, report); });
  }

  /** @param packet_size data bytes in a package, 1 to VEXO_FONT_PACKET_MAX. */
  void DownloadFont(const std::string& path, int32_t packet_size, const ProgressListener& progress = nullptr,
                    std::error_code* error = nullptr) {
    Download("download a font", progress, error,
             [&](auto report) { return ::DownloadFontFile(target(), packet_size, path.c_str(), nullptr, report); });
  }

  /**
   * @param loader descriptor of the printer in its update mode. Success does not mean that the printer took the image:
   *               see DownloadFMWImg.
   */
  void DownloadFirmware(const std::string& path, const std::string& loader, const ProgressListener& progress = nullptr,
                        std::error_code* error = nullptr) {
    Download("download firmware", progress, error,
             [&](auto report) { return ::DownloadFMWImg(target(), path.c_str(), loader.c_str(), report); });
  }

  /** @param loader descriptor of the printer in its loader; null if it is there already. */
  void DownloadYModem(const std::string& path, const char* loader, const ProgressListener& progress = nullptr,
                      std::error_code* error = nullptr) {
    Download("download by YModem", progress, error,
             [&](auto report) { return ::downloadYModem(target(), path.c_str(), loader, report); });
  }

 private:
  struct RunningDownload {
    const ProgressListener& progress;
    std::exception_ptr exception;
  };

  VexoPrinterHandle* target() { return static_cast<Printer*>(this)->handle(); }

  template <typename Call>
  static void Download(const char* action, const ProgressListener& progress, std::error_code* error, Call call) {
    RunningDownload download = {progress, nullptr};
    running_ = &download;
    const int32_t result = call(progress ? &Progress : nullptr);
    running_ = nullptr;
    if (download.exception) {
      std::rethrow_exception(download.exception);
    }
    StoreOrThrow(result, action, error);
  }

  static void Progress(int32_t percentage) {
    if (running_->exception) {
      return;
    }
    try {
      running_->progress(percentage);
    } catch (...) {  // The library may come from another compiler: no exception may reach it.
      running_->exception = std::current_exception();
      setCancel();
    }
  }

  inline static thread_local RunningDownload* running_ = nullptr;
};

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_HPP_
