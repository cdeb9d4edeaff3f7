#include "core/core_test.h"

namespace {

TEST(LibraryInfo, VersionNeedsEightBytesAndWritesNoMore) {
  char buffer[] = "##########";
  EXPECT_EQ(-1, GetExtendVersion(buffer, 7));
  EXPECT_EQ("##########", std::string(buffer));

  EXPECT_EQ(0, GetExtendVersion(buffer, 8));
  EXPECT_EQ(std::string("1.0.2.2\0##", 10), std::string(buffer, 10));
  EXPECT_EQ(-1, GetExtendVersion(nullptr, 8));
}

TEST(LibraryInfo, OnlyTheJobMonitorSetsTheLastError) {
  EXPECT_EQ(0, GetLastErrorCode());
  EXPECT_EQ(-6, DiskPortOpen(nullptr, "USB"));
  EXPECT_EQ(-6, SetPrintWidth(nullptr, 576));
  EXPECT_EQ(0, GetLastErrorCode());
}

}  // namespace
