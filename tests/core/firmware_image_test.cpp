#include "vexoctl/firmware_image.h"

#include <optional>

#include "core/core_test.h"

namespace vexoctl {
namespace {

constexpr size_t kHeaderSize = 76;

// A segment whose header announces `announced` bytes, followed by `body` bytes that would be a wrong length in a
// header.
std::string Segment(uint32_t announced, size_t body) {
  std::string segment(kHeaderSize + body, '\xFF');
  for (size_t i = 0; i < 4; ++i) {
    segment[4 + i] = static_cast<char>(announced >> (8 * i));
  }
  return segment;
}

TEST(FirmwareImage, SegmentsMakeUpTheFile) {
  const struct {
    std::string content;
    size_t whole_segments;
    std::optional<size_t> fault_offset = {};
    std::string reason = {};
  } rows[] = {
      {"", 0},
      {Segment(0, 0), 1},
      {Segment(1, 1) + Segment(0, 0) + Segment(0x10203, 0x10203), 3},
      {std::string(75, '-'), 0, 0, "has 75 bytes of its 76-byte header only"},
      {Segment(100, 100) + "abc", 1, 176, "has 3 bytes of its 76-byte header only"},
      {Segment(5, 5) + Segment(10, 9), 1, 81, "announces a body of 10 bytes, of which the file holds 9"},
      {Segment(0xFFFFFFFF, 0), 0, 0, "announces a body of 4294967295 bytes, of which the file holds 0"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const auto* const content = reinterpret_cast<const uint8_t*>(row.content.data());
    const FirmwareImage image = ExamineFirmwareImage(content, row.content.size());
    EXPECT_EQ(image.segments, row.whole_segments);
    ASSERT_EQ(image.fault.has_value(), row.fault_offset.has_value());
    if (image.fault) {
      EXPECT_EQ(image.fault->offset, row.fault_offset);
      EXPECT_EQ(image.fault->reason, row.reason);
    }
  }
}

}  // namespace
}  // namespace vexoctl
