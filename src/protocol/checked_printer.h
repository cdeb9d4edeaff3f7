// The printer behind a printer handle, as used by everything above the port layer.
#ifndef VEXO_PROTOCOL_CHECKED_PRINTER_H_
#define VEXO_PROTOCOL_CHECKED_PRINTER_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "protocol/bytes.h"
#include "vexo/printer.h"

namespace vexo {

// Checks the handle before every port operation, because another thread may close the port between two of them:
// VEXO_ERROR_HANDLE for a null handle or a wrong magic, VEXO_ERROR_IO_NOT_OPEN when the handle holds no open port.
// Passes on the result of a port operation unchanged. Borrows the handle.
class CheckedPrinter {
 public:
  explicit CheckedPrinter(VexoPrinterHandle* handle) : handle_(handle) {}

  // Checks the handle only. Operations also check the magic of the port object (VEXO_ERROR_HANDLE).
  int32_t Check() const;

  // Writes a whole command. The number of bytes written is dropped: exchanges depend on the result only.
  int32_t Write(const uint8_t* bytes, size_t length) const;
  int32_t Write(const Bytes& command) const;
  int32_t Write(std::string_view command) const;

  // *read may exceed `length` or `to - from`: USB ports also count the bytes of a longer packet that they dropped.
  int32_t Read(uint8_t* buffer, uint32_t length, uint32_t* read) const;
  int32_t ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) const;

  int32_t GetUri(char* buffer, size_t size) const;

  // Marks the handle closed, then closes the port. Ignores what the port's Close returns. Returns VEXO_OK, or the
  // result of the handle check.
  int32_t Close() const;

  // Calls the port's Close and returns its result, for a handle that is discarded right after.
  int32_t ClosePort() const;

 private:
  template <typename Entry, typename... Arguments>
  int32_t Call(Entry VexoPort::*entry, Arguments... arguments) const;

  VexoPrinterHandle* handle_;
};

}  // namespace vexo

#endif  // VEXO_PROTOCOL_CHECKED_PRINTER_H_
