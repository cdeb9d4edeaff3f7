// The printer behind a printer handle, as everything above the ports uses it.
#ifndef VEXO_PROTOCOL_CHECKED_PRINTER_H_
#define VEXO_PROTOCOL_CHECKED_PRINTER_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "protocol/bytes.h"
#include "vexo/printer.h"

namespace vexo {

// Checks the handle before every single port operation, because another thread may close the port between two of them:
// -6 for a null handle or a wrong magic, -309 when the port is not open or there is none. A
// port operation's own result is passed on unchanged. Borrows the handle.
class CheckedPrinter {
 public:
  explicit CheckedPrinter(VexoPrinterHandle* handle) : handle_(handle) {}

  // The handle alone. An operation on a port object without its magic gives -6.
  int32_t Check() const;

  // Writes all of a command; how many bytes went out does not matter to the exchanges, only the result does.
  int32_t Write(const uint8_t* bytes, size_t length) const;
  int32_t Write(const Bytes& command) const;
  int32_t Write(std::string_view command) const;

  // *read may exceed `length` or `to - from`: USB ports count the bytes of a longer packet that were dropped.
  int32_t Read(uint8_t* buffer, uint32_t length, uint32_t* read) const;
  int32_t ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) const;

  int32_t GetUri(char* buffer, size_t size) const;

  // Marks the handle closed, then closes the port. What the port's Close returns does not matter: 0, -6 or -309.
  int32_t Close() const;

  // The port's Close alone, with what it returns: for a handle that is given up right after it.
  int32_t ClosePort() const;

 private:
  template <typename Entry, typename... Arguments>
  int32_t Call(Entry VexoPort::*entry, Arguments... arguments) const;

  VexoPrinterHandle* handle_;
};

}  // namespace vexo

#endif  // VEXO_PROTOCOL_CHECKED_PRINTER_H_
