#include "protocol/checked_printer.h"

#include "port/shared_field.h"
#include "vexo/error.h"

namespace vexo {
namespace {

// Returns the open port of a handle, or null with the reason in *error.
VexoPort* FindOpenPort(const VexoPrinterHandle* handle, int32_t* error) {
  *error = VEXO_ERROR_HANDLE;
  if (handle == nullptr || LoadField(handle->magic) != VEXO_PRINTER_MAGIC) {
    return nullptr;
  }
  const bool open = LoadField(handle->portOpen) != 0;
  VexoPort* const port = LoadField(handle->port);
  if (!open || port == nullptr) {
    *error = VEXO_ERROR_IO_NOT_OPEN;
    return nullptr;
  }
  *error = VEXO_OK;
  return port;
}

}  // namespace

int32_t CheckedPrinter::Check() const {
  int32_t error = VEXO_OK;
  FindOpenPort(handle_, &error);
  return error;
}

// Checks the port's magic too, so that no operation is taken from a dangling pointer. A port object supplied by the
// host may leave an operation null.
template <typename Entry, typename... Arguments>
int32_t CheckedPrinter::Call(Entry VexoPort::*entry, Arguments... arguments) const {
  int32_t error = VEXO_OK;
  VexoPort* const port = FindOpenPort(handle_, &error);
  if (port == nullptr) {
    return error;
  }
  if (LoadField(port->magic) != VEXO_PORT_MAGIC) {
    return VEXO_ERROR_HANDLE;
  }
  return port->*entry != nullptr ? (port->*entry)(port, arguments...) : VEXO_ERROR_NOT_IMPLEMENTED;
}

int32_t CheckedPrinter::Write(const uint8_t* bytes, size_t length) const {
  uint32_t written = 0;
  return Call(&VexoPort::Write, bytes, 0U, static_cast<uint32_t>(length), &written);
}

int32_t CheckedPrinter::Write(const Bytes& command) const { return Write(command.data(), command.size()); }

int32_t CheckedPrinter::Write(std::string_view command) const {
  return Write(reinterpret_cast<const uint8_t*>(command.data()), command.size());
}

int32_t CheckedPrinter::Read(uint8_t* buffer, uint32_t length, uint32_t* read) const {
  return Call(&VexoPort::Read, buffer, 0U, length, read);
}

int32_t CheckedPrinter::ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) const {
  return Call(&VexoPort::ReadAvailable, buffer, from, to, read);
}

int32_t CheckedPrinter::GetUri(char* buffer, size_t size) const {
  uint32_t length = 0;
  return Call(&VexoPort::GetUri, buffer, static_cast<uint32_t>(size), &length);
}

int32_t CheckedPrinter::ClosePort() const { return Call(&VexoPort::Close); }

int32_t CheckedPrinter::Close() const {
  int32_t error = VEXO_OK;
  VexoPort* const port = FindOpenPort(handle_, &error);
  if (port == nullptr) {
    return error;
  }
  StoreField<uint8_t>(&handle_->portOpen, 0);
  if (LoadField(port->magic) == VEXO_PORT_MAGIC && port->Close != nullptr) {
    port->Close(port);
  }
  return VEXO_OK;
}

}  // namespace vexo
