// How vexoctl examines firmware images and interprets the library's trace. It must never report a false success.
#include <optional>

#include "core/core_test.h"
#include "vexoctl/support/download_trace.h"
#include "vexoctl/support/firmware_image.h"

namespace vexoctl {
namespace {

constexpr size_t kHeaderSize = 76;

// A segment whose header announces `announced` bytes, followed by `body` bytes, which are no valid header.
std::string Segment(uint32_t announced, size_t body) {
  std::string segment(kHeaderSize + body, '\xFF');
  return segment.replace(4, 4, vexo::test::LittleEndian(announced, 4));
}

TEST(FirmwareImage, SegmentsAndFaults) {
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
    const FirmwareImage image = ExamineFirmwareImage(row.content);
    EXPECT_EQ(image.segments, row.whole_segments);
    ASSERT_EQ(image.fault.has_value(), row.fault_offset.has_value());
    if (image.fault) {
      EXPECT_EQ(image.fault->offset, row.fault_offset);
      EXPECT_EQ(image.fault->reason, row.reason);
    }
  }
}

using Kind = DownloadPieces::Kind;

TEST(DownloadTrace, FirmwareSucceedsOnlyWithTheLastLine) {
  const char* const taken = "Successfully distributed...";
  const struct {
    std::vector<const char*> lines;
    int32_t result;
    const char* place;
  } rows[] = {
      {{}, -300, "before anything was sent"},
      {{"Enter Upgrade mode...", "write command failed..."}, -300, "at the switch into the update mode"},
      {{"Enter Upgrade mode...", "Openfail"}, -311, "at the connection to the printer in its update mode"},
      {{"Enter Upgrade mode...", "failed: ReadData failed..."}, -6008, "at the header of segment 1 of 2"},
      {{"Enter Upgrade mode...", taken, "failed: ReadData error..."}, -6009, "at the body of segment 1 of 2"},
      {{"Enter Upgrade mode...", taken, taken, taken, "Cancel..."}, -300, "at the body of segment 2 of 2"},
      {{"Enter Upgrade mode...", taken, taken, taken, taken}, -300, "at the header of segment 3 of 2"},
      {{taken, "Download firmware complete...", "Reboot device failed..."}, -300, "at the restart"},
      {{taken, "Download firmware complete...", "Successfully restarted the device..."}, 0, "at the restart"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    DownloadTrace trace({Kind::kSegments, 2});
    for (const char* line : row.lines) {
      trace.AddLine(line);
    }
    EXPECT_EQ(row.result, trace.FirmwareResult());
    EXPECT_EQ(row.place, trace.Place());
  }
}

TEST(DownloadTrace, CountsConfirmedPackages) {
  DownloadTrace trace({Kind::kPackages, 5});
  for (const char* line : {"Enter Upgrade mode...", "Ready to send file...", "package 0", "package 1", "package 2"}) {
    trace.AddLine(line);
  }
  EXPECT_EQ("after 2 of 5 packages", trace.Place());
  trace.AddLine("Cancel...");
  EXPECT_EQ("after 3 of 5 packages", trace.Place());
}

}  // namespace
}  // namespace vexoctl
