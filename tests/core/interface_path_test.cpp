// The instance part that hosts recognise a USB printer by.
#include "discovery/interface_path.h"

#include <gtest/gtest.h>

namespace vexo {
namespace {

TEST(InterfacePath, ThirdPartInUpperCaseIsTheInstance) {
  const struct {
    const char* path;
    const char* instance;
  } rows[] = {
      {R"(\\?\USB#VID_1A2B&PID_0001#abc123#{28d78fad-5a12-11d1-ae5b-0000f803a8c2})", "ABC123"},
      {R"(\\?\usb#vid_1a2b&pid_0001#7&1a2b3c&0&1#{28d78fad-5a12-11d1-ae5b-0000f803a8c2})", "7&1A2B3C&0&1"},
      {"a#b#c", "C"},
      {"##c", "C"},  // Empty parts count.
      {"#a##b", ""},
      {"a#b#", ""},
      {"a#b", ""},
      {"abc", ""},
      {"", ""},
      {"a#b#z\xe4\xf6`{ 1", "Z\xe4\xf6`{ 1"},  // Only ASCII letters have an upper case in every code page.
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.instance, InstanceOfInterfacePath(row.path)) << row.path;
  }
}

}  // namespace
}  // namespace vexo
