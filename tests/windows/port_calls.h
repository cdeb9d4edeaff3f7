// Wrappers for the port object's transfers, which return the result code, the count and the data as one value.
#ifndef VEXO_TESTS_WINDOWS_PORT_CALLS_H_
#define VEXO_TESTS_WINDOWS_PORT_CALLS_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>

#include "vexo/error.h"
#include "vexo/printer.h"

namespace vexo::test {

using Written = std::pair<int32_t, uint32_t>;                // Result, bytes written.
using Reading = std::tuple<int32_t, uint32_t, std::string>;  // Result, bytes counted, data.

// Data starts at this offset, so that an ignored offset is detected.
inline constexpr uint32_t kOffset = 1;
inline constexpr uint32_t kStaleCount = 4711;

inline Written Write(VexoPort* port, const std::string& bytes) {
  const std::string buffer = '?' + bytes;
  uint32_t written = kStaleCount;
  const int32_t result = port->Write(port, reinterpret_cast<const uint8_t*>(buffer.data()), kOffset,
                                     static_cast<uint32_t>(bytes.size()), &written);
  return {result, written};
}

// `operation`: &VexoPort::Read or &VexoPort::ReadAvailable; `last` is its fourth argument.
template <typename Operation>
Reading ReadWith(Operation operation, VexoPort* port, uint32_t length, uint32_t last) {
  std::string buffer(kOffset + length + 1, '?');
  uint32_t read = kStaleCount;
  const int32_t result = (port->*operation)(port, reinterpret_cast<uint8_t*>(buffer.data()), kOffset, last, &read);
  EXPECT_EQ(buffer.front(), '?') << "written before the caller's range";
  EXPECT_EQ(buffer.back(), '?') << "written behind the caller's range";
  return {result, read, buffer.substr(kOffset, std::min(read, length))};
}

inline Reading Read(VexoPort* port, uint32_t length) { return ReadWith(&VexoPort::Read, port, length, length); }

inline Reading ReadAvailable(VexoPort* port, uint32_t length) {
  return ReadWith(&VexoPort::ReadAvailable, port, length, kOffset + length);
}

inline void ExpectTimeouts(VexoPort* port, const VexoPortTimeouts& expected) {
  VexoPortTimeouts timeouts = {};
  EXPECT_EQ(port->GetTimeouts(port, &timeouts), VEXO_OK);
  EXPECT_EQ(std::memcmp(&timeouts, &expected, sizeof(timeouts)), 0);
}

// Test data whose period is longer than any packet.
inline std::string Pattern(size_t length, size_t first = 0) {
  std::string bytes(length, '\0');
  for (size_t i = 0; i < length; ++i) {
    bytes[i] = static_cast<char>((first + i) % 251);
  }
  return bytes;
}

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_PORT_CALLS_H_
