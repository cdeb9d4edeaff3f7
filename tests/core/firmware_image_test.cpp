#include "vexoctl/firmware_image.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vexoctl {
namespace {

constexpr size_t kHeaderSize = 76;

// A segment whose header announces `announced` bytes, followed by `body` bytes that would be a wrong length in a
// header.
void AddSegment(std::vector<uint8_t>* image, uint32_t announced, size_t body) {
  const size_t header = image->size();
  image->resize(header + kHeaderSize + body, 0xFF);
  for (size_t i = 0; i < 4; ++i) {
    (*image)[header + 4 + i] = static_cast<uint8_t>(announced >> (8 * i));
  }
}

struct Segment {
  uint32_t announced;
  size_t body;
};

struct Case {
  const char* name;
  std::vector<Segment> segments;
  size_t stray_bytes;
  size_t whole_segments;
  std::optional<size_t> fault_offset;
  std::string reason;
};

TEST(FirmwareImage, SegmentsMakeUpTheFile) {
  const Case cases[] = {
      {"empty", {}, 0, 0, {}, {}},
      {"one without a body", {{0, 0}}, 0, 1, {}, {}},
      {"several", {{1, 1}, {0, 0}, {0x10203, 0x10203}}, 0, 3, {}, {}},
      {"header only begun", {}, 75, 0, 0, "has 75 bytes of its 76-byte header only"},
      {"stray bytes", {{100, 100}}, 3, 1, 176, "has 3 bytes of its 76-byte header only"},
      {"body cut", {{5, 5}, {10, 9}}, 0, 1, 81, "announces a body of 10 bytes, of which the file holds 9"},
      {"largest length", {{0xFFFFFFFF, 0}}, 0, 0, 0, "announces a body of 4294967295 bytes, of which the file holds 0"},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    std::vector<uint8_t> content;
    for (const Segment& segment : test.segments) {
      AddSegment(&content, segment.announced, segment.body);
    }
    content.resize(content.size() + test.stray_bytes);
    const FirmwareImage image = ExamineFirmwareImage(content.data(), content.size());
    EXPECT_EQ(image.segments, test.whole_segments);
    ASSERT_EQ(image.fault.has_value(), test.fault_offset.has_value());
    if (image.fault) {
      EXPECT_EQ(image.fault->offset, test.fault_offset);
      EXPECT_EQ(image.fault->reason, test.reason);
    }
  }
}

}  // namespace
}  // namespace vexoctl
