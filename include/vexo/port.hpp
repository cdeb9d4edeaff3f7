/**
 * @file port.hpp
 * A printer's port for C++ hosts: opening, reading and writing. Part of printer.hpp.
 */
#ifndef VEXO_PORT_HPP_
#define VEXO_PORT_HPP_

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vexo/detail/split.hpp"
#include "vexo/error.hpp"
#include "vexo/extend.h"

namespace vexo {

/** The parts of a device URI, "vexo:/dev/bus/TYPE/DEVICE?key=value+key=value". */
struct DeviceUri {
  std::string type;                                            /**< "NET". */
  std::string device;                                          /**< "DEVICE", "COM3". */
  std::vector<std::pair<std::string, std::string>> parameters; /**< Keys and values, in the order of the URI. */

  /** @return the value of a parameter; empty if there is none. */
  std::string Find(std::string_view key) const {
    const auto found =
        std::find_if(parameters.begin(), parameters.end(), [&](const auto& p) { return p.first == key; });
    return found == parameters.end() ? "" : found->second;
  }
};

/** Takes a device URI apart. */
inline DeviceUri SplitDeviceUri(std::string_view uri) {
  constexpr std::string_view kScheme = "vexo:/dev/bus/";
  uri.remove_prefix(std::min(kScheme.size(), uri.size()));
  DeviceUri parts;
  parts.type = detail::TakeUntil('/', &uri);
  parts.device = detail::TakeUntil('?', &uri);
  while (!uri.empty()) {
    std::string_view value = detail::TakeUntil('+', &uri);
    const std::string_view key = detail::TakeUntil('=', &value);
    parts.parameters.emplace_back(key, value);
  }
  return parts;
}

namespace detail {

inline int32_t WriteOnce(VexoPrinterHandle* handle, std::string_view data, uint32_t* written) {
  if (handle->portOpen == 0) {
    return VEXO_ERROR_IO_NOT_OPEN;
  }
  const auto* const bytes = reinterpret_cast<const uint8_t*>(data.data());
  return handle->port->Write(handle->port, bytes, 0, static_cast<uint32_t>(data.size()), written);
}

inline int32_t WriteAll(VexoPrinterHandle* handle, std::string_view data, size_t* sent) {
  constexpr size_t kPieceSize = 4096;  // A slow serial line takes as much within the write limit.
  int32_t result = VEXO_OK;
  while (result == VEXO_OK && *sent < data.size()) {
    uint32_t written = 0;
    result = WriteOnce(handle, data.substr(*sent, kPieceSize), &written);
    *sent += written;
    if (result == VEXO_OK || result == VEXO_ERROR_IO_WRITE_TIMEOUT) {
      result = written > 0 ? VEXO_OK : VEXO_ERROR_IO_WRITE_TIMEOUT;
    }
  }
  return result;
}

}  // namespace detail

/** A printer handle with its port, which it releases on destruction. Use it on one thread at a time, except Abort. */
class Port {
 public:
  /**
   * Makes the port that a descriptor or device URI names ("NET,192.168.1.100", "USB", "COM3,9600"). The printer is not
   * contacted before Open. After an error there is no port, and everything else fails with VEXO_ERROR_IO_NOT_OPEN.
   */
  explicit Port(const std::string& descriptor, std::error_code* error = nullptr)
      : handle_(new VexoPrinterHandle{VEXO_PRINTER_MAGIC, nullptr, nullptr, 0}) {
    // The export that makes a port of any kind without looking for a disk or an imaging device first. It opens a serial
    // line; on USB it may have found a scanner gun, which is not the printer.
    const int32_t result = ScannerGunPortOpen(handle_.get(), descriptor.c_str());
    serial_is_open_ = result == VEXO_OK && kind() == VEXO_PORT_SERIAL;
    handle_->portOpen = 0;
    StoreOrThrow(port() == nullptr ? result : VEXO_OK, "make a port for " + descriptor, error);
  }

  /** Connects; reconnects if it is connected already. */
  void Open(std::error_code* error = nullptr) {
    int32_t result = port() == nullptr ? VEXO_ERROR_IO_NOT_OPEN : VEXO_OK;
    if (result == VEXO_OK && !serial_is_open_) {
      port()->Close(port());
      result = port()->Open(port());
    }
    serial_is_open_ = false;
    handle_->portOpen = result == VEXO_OK ? 1 : 0;
    StoreOrThrow(result, "open the printer", error);
  }

  /** Disconnects; Open connects again. */
  void Close() noexcept {
    if (port() != nullptr) {
      port()->Close(port());
    }
    serial_is_open_ = false;
    handle_->portOpen = 0;
  }

  /** Whether the last Open succeeded, and no Close came after it. */
  bool is_open() const noexcept { return handle_->portOpen != 0; }

  /** @return a VexoPortKind; -1 without a port. */
  int32_t kind() const noexcept { return port() == nullptr ? -1 : static_cast<int32_t>(port()->kind); }

  /** @return the canonical device URI; empty for a buffer port, and without a port. */
  std::string uri() const {
    char text[VEXO_URI_SIZE] = {};
    uint32_t length = 0;
    if (port() != nullptr) {
      port()->GetUri(port(), text, sizeof text, &length);
    }
    return text;
  }

  /** Sets one limit for connecting, for a write, for an answer and for a gap in it. Call it before Open. */
  void SetTimeLimit(std::chrono::milliseconds limit, std::error_code* error = nullptr) {
    int32_t result = VEXO_ERROR_IO_NOT_OPEN;
    if (port() != nullptr) {
      const auto milliseconds = static_cast<uint32_t>(limit.count());
      result = port()->SetTimeouts(port(), {milliseconds, 0, milliseconds, 0, milliseconds, milliseconds});
    }
    if (serial_is_open_) {
      Close();  // A serial line adopts its limits when it opens.
    }
    StoreOrThrow(result, "set the time limit", error);
  }

  /** Writes once. @return the number of bytes written, also after a stored error. */
  size_t Write(std::string_view data, std::error_code* error = nullptr) {
    uint32_t written = 0;
    StoreOrThrow(detail::WriteOnce(handle(), data, &written), "send", error);
    return written;
  }

  /**
   * Writes everything, in as many writes as the printer needs: a slow one may take longer than the write limit, as long
   * as it takes some bytes within it. @return the number of bytes written, also after a stored error.
   */
  size_t WriteAll(std::string_view data, std::error_code* error = nullptr) {
    size_t sent = 0;
    StoreOrThrow(detail::WriteAll(handle(), data, &sent), "send", error);
    return sent;
  }

  /** Waits for `size` bytes. @return what arrived, also after a stored error. */
  std::string Read(size_t size, std::error_code* error = nullptr) { return ReadWith(&VexoPort::Read, size, error); }

  /** @return at most `size` bytes that are there now or arrive within some 100 ms; empty without any. */
  std::string ReadAvailable(size_t size, std::error_code* error = nullptr) {
    return ReadWith(&VexoPort::ReadAvailable, size, error);
  }

  /** Stops a Write or Read on another thread, and all later ones. Afterwards a new object is needed. */
  void Abort(std::error_code* error = nullptr) {
    StoreOrThrow(port() == nullptr ? VEXO_ERROR_IO_NOT_OPEN : port()->Abort(port()), "abort the transfer", error);
  }

  /** For the C functions. The address stays the same when the object is moved. */
  VexoPrinterHandle* handle() noexcept { return handle_.get(); }

 private:
  struct Release {
    void operator()(VexoPrinterHandle* handle) const noexcept {
      DiskPortOpen(handle, "");  // Opening nothing closes the port and frees it.
      delete handle;
    }
  };

  VexoPort* port() const noexcept { return handle_->port; }

  // Read takes a length where ReadAvailable takes an end; from offset 0 they are the same.
  using ReadOperation = int32_t (*VexoPort::*)(VexoPort*, uint8_t*, uint32_t, uint32_t, uint32_t*);
  std::string ReadWith(ReadOperation operation, size_t size, std::error_code* error) {
    std::string data(size, '\0');
    uint32_t read = 0;
    int32_t result = VEXO_ERROR_IO_NOT_OPEN;
    if (is_open()) {
      auto* const bytes = reinterpret_cast<uint8_t*>(data.data());
      result = (port()->*operation)(port(), bytes, 0, static_cast<uint32_t>(size), &read);
    }
    data.resize(std::min<size_t>(read, size));  // USB counts whole packets.
    StoreOrThrow(result, "receive", error);
    return data;
  }

  std::unique_ptr<VexoPrinterHandle, Release> handle_;
  bool serial_is_open_ = false;  // The constructor opened the line, and nothing has changed that since.
};

}  // namespace vexo

#endif  // VEXO_PORT_HPP_
