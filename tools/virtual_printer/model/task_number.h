#ifndef VIRTUAL_PRINTER_MODEL_TASK_NUMBER_H_
#define VIRTUAL_PRINTER_MODEL_TASK_NUMBER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace virtual_printer {

// The number by which a host follows its print job; always four digits on the wire.
using TaskNumber = std::uint16_t;

constexpr TaskNumber kNoTask = 0;  // Of a job whose host has not given it a number.
constexpr TaskNumber kMaxTask = 9999;

// 7 is 0007.
inline std::string TaskText(TaskNumber task) {
  std::string digits = std::to_string(task);
  return digits.insert(0, 4 - digits.size(), '0');
}

// Nothing, unless the text is four digits.
inline std::optional<TaskNumber> ParseTask(std::string_view text) {
  if (text.size() != 4 || text.find_first_not_of("0123456789") != std::string_view::npos) {
    return std::nullopt;
  }
  return static_cast<TaskNumber>(std::stoi(std::string(text)));
}

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_TASK_NUMBER_H_
