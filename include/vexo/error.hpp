/**
 * @file error.hpp
 * Result codes for C++ hosts, as std::error_code and std::system_error. Header-only; C++17.
 */
#ifndef VEXO_ERROR_HPP_
#define VEXO_ERROR_HPP_

#include <cstdint>
#include <string>
#include <system_error>

#include "vexo/error.h"

namespace vexo {

/** The meaning of a code of error.h in English, in a few words. */
inline const char* ErrorDescription(int32_t code) {
  static constexpr struct {
    int32_t code;
    const char* text;
  } kDescriptions[] = {
      {VEXO_OK, "success"},
      {VEXO_ERROR_PARAMETER, "an argument is missing or wrong"},
      {VEXO_ERROR_MONITOR_PARAMETER, "an argument is missing or wrong"},
      {VEXO_ERROR_BUFFER_TOO_SMALL, "the buffer is too small"},
      {VEXO_ERROR_MONITOR_ANSWER_TOO_LONG, "the buffer is too small"},
      {VEXO_ERROR_NOT_SUPPORTED_PRINTER, "this kind of port or printer is not known"},
      {VEXO_ERROR_HANDLE, "not a printer handle"},
      {VEXO_ERROR_NOT_IMPLEMENTED, "this kind of port cannot do that"},
      {VEXO_ERROR_OUT_OF_MEMORY, "out of memory"},
      {VEXO_ERROR_MONITOR_OUT_OF_MEMORY, "out of memory"},
      {VEXO_ERROR_NO_PRINTER, "no printer is ready"},
      {VEXO_ERROR_IO_SETTING, "malformed port descriptor"},
      {VEXO_ERROR_IO_NOT_OPEN, "the port is not open"},
      {VEXO_ERROR_IO_ALREADY_OPEN, "the port is open already"},
      {VEXO_ERROR_IO_OPEN_FAILED, "the printer cannot be connected to"},
      {VEXO_ERROR_IO_WRITE, "sending failed"},
      {VEXO_ERROR_IO_WRITE_TIMEOUT, "the printer takes no more data"},
      {VEXO_ERROR_IO_READ, "the printer gave another answer than expected"},
      {VEXO_ERROR_IO_READ_TIMEOUT, "the printer does not answer"},
      {VEXO_ERROR_MONITOR_NO_ANSWER, "the printer does not answer"},
      {VEXO_ERROR_DOWNLOAD_NO_ANSWER, "the printer does not answer"},
      {VEXO_ERROR_USB_NOT_FOUND, "no such USB printer"},
      {VEXO_ERROR_DOWNLOAD_CANCELLED, "cancelled"},
      {VEXO_ERROR_DOWNLOAD_MODE, "the printer did not enter its download mode"},
      {VEXO_ERROR_DOWNLOAD_EMPTY, "the file is empty"},
      {VEXO_ERROR_DOWNLOAD_BAD_ANSWER, "the printer refused the data or did not confirm it"},
      {VEXO_ERROR_MONITOR_NOT_OPEN, "job monitoring is off"},
  };
  for (const auto& entry : kDescriptions) {
    if (entry.code == code) {
      return entry.text;
    }
  }
  return "the operation failed";
}

/** The category of the codes in error.h. */
inline const std::error_category& ErrorCategory() {
  class Category : public std::error_category {
   public:
    const char* name() const noexcept override { return "vexoextend"; }
    std::string message(int code) const override {
      return ErrorDescription(code) + (" (" + std::to_string(code) + ")");
    }
  };
  static const Category category;
  return category;
}

/** A result of a C function as a std::error_code: success for 0, an error of the system for a positive one. */
inline std::error_code MakeErrorCode(int32_t result) noexcept {
  return {result, result > 0 ? std::system_category() : ErrorCategory()};
}

/**
 * Stores a result of a C function; without a place to store it, throws a std::system_error unless it is VEXO_OK.
 *
 * @param action what was done, for the exception: "set the print width".
 */
inline void StoreOrThrow(int32_t result, const std::string& action, std::error_code* error = nullptr) {
  if (error != nullptr) {
    *error = MakeErrorCode(result);
  } else if (result != VEXO_OK) {
    throw std::system_error(MakeErrorCode(result), "cannot " + action);
  }
}

}  // namespace vexo

#endif  // VEXO_ERROR_HPP_
