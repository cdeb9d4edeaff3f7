// Builds the printer's report frames independently of the library's code.
#ifndef VEXO_TESTS_SUPPORT_REPORT_FRAMES_H_
#define VEXO_TESTS_SUPPORT_REPORT_FRAMES_H_

#include <cstdint>
#include <string>

namespace vexo::test {

inline std::string LittleEndian(uint32_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) {
    text += static_cast<char>(value >> (8 * i));
  }
  return text;
}

inline std::string Frame(uint16_t type, const std::string& payload) {
  return "\x1b\x1c& V1 report" + LittleEndian(type, 2) + LittleEndian(static_cast<uint32_t>(payload.size()), 2) +
         payload;
}

// `task` has four digits.
inline std::string Started(const std::string& task) { return Frame(0x100, '?' + task); }
inline std::string Ended(const std::string& task, uint32_t value) {
  return Frame(0x101, '?' + task + LittleEndian(value, 4));
}
inline std::string ValueReply(uint32_t value) { return Frame(0x104, '?' + LittleEndian(value, 4)); }

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_REPORT_FRAMES_H_
