// What vexoctl makes of the library's account of a download: a technician must never be told of a false success.
#include "vexoctl/download_trace.h"

#include <gtest/gtest.h>

#include <vector>

namespace vexoctl {
namespace {

using Kind = DownloadPieces::Kind;

TEST(DownloadTrace, FirmwareIsTakenOnlyWhenTheLastLineSaysSo) {
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

TEST(DownloadTrace, PackagesBeforeTheLastLineAreThere) {
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
