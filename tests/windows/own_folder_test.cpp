// Files beside the library, which is linked into this program.
#include "platform/own_folder.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <fstream>
#include <string>

namespace vexo {
namespace {

std::string ProgramFolder() {
  char path[MAX_PATH] = {};
  EXPECT_NE(GetModuleFileNameA(nullptr, path, MAX_PATH), 0U);
  return std::string(path).substr(0, std::string(path).find_last_of('\\') + 1);
}

TEST(OwnFolderTest, IsTheProgramsFolderNotTheCurrentDirectory) {
  const std::string name = "own_folder_test_" + std::to_string(GetCurrentProcessId()) + ".tmp";
  const std::string path = ProgramFolder() + name;
  char current[MAX_PATH] = {};
  ASSERT_NE(GetCurrentDirectoryA(MAX_PATH, current), 0U);
  ASSERT_NE(SetCurrentDirectoryA("C:\\"), 0);
  std::ofstream(path, std::ios::binary) << "a\r\n\x1a";
  {
    const platform::OwnedFile file = platform::OpenOwnFile(name.c_str());
    char content[8] = {};
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::fread(content, 1, sizeof(content), file.get()), 4U);
    EXPECT_STREQ(content, "a\r\n\x1a");
  }
  EXPECT_NE(DeleteFileA(path.c_str()), 0);
  EXPECT_EQ(platform::OpenOwnFile(name.c_str()), nullptr);
  SetCurrentDirectoryA(current);
}

}  // namespace
}  // namespace vexo
