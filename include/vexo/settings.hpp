/**
 * @file settings.hpp
 * Printer settings for C++ hosts. Part of printer.hpp.
 */
#ifndef VEXO_SETTINGS_HPP_
#define VEXO_SETTINGS_HPP_

#include <cstdint>

#include "vexo/error.hpp"
#include "vexo/extend.h"

namespace vexo {

/** The settings of a printer, as a base of its class (Printer). Use them while job monitoring is off. */
template <typename Printer>
class PrinterSettings {
 public:
  /** @return the print width in dots; 0 after a stored error. An incomplete answer gives VEXO_ERROR_IO_READ. */
  uint32_t GetPrintWidth(std::error_code* error = nullptr) {
    constexpr uint32_t kNone = UINT32_MAX;
    uint32_t width = kNone;
    const int32_t result = ::GetPrintWidth(static_cast<Printer*>(this)->handle(), &width);
    StoreOrThrow(result == VEXO_OK && width == kNone ? VEXO_ERROR_IO_READ : result, "read the print width", error);
    return width == kNone ? 0 : width;
  }

  /** Sets the print width in dots, and makes the printer store it. */
  void SetPrintWidth(uint32_t dots, std::error_code* error = nullptr) {
    StoreOrThrow(::SetPrintWidth(static_cast<Printer*>(this)->handle(), dots), "set the print width", error);
  }
};

}  // namespace vexo

#endif  // VEXO_SETTINGS_HPP_
