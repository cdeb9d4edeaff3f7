// The parallel port through the exports, on a system device. run_parallel_tests.sh replaces the device by a file that
// stores what is written.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "vexo/extend.h"
#include "windows/port_calls.h"

namespace vexo::test {
namespace {

constexpr char kDevice[] = "LPT5";

// The printer's side of the device, used while no port has it open.
class Device {
 public:
  Device() : file_(CreateFileA(kDevice, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr)) {
    EXPECT_NE(file_, INVALID_HANDLE_VALUE) << "is " << kDevice << " linked? error " << GetLastError();
  }
  ~Device() { CloseHandle(file_); }

  void Replace(const std::string& content) {
    SetEndOfFile(file_);
    DWORD written = 0;
    EXPECT_NE(WriteFile(file_, content.data(), static_cast<DWORD>(content.size()), &written, nullptr), 0);
  }

  std::string Content() {
    std::string content(GetFileSize(file_, nullptr), '\0');
    DWORD read = 0;
    EXPECT_NE(ReadFile(file_, content.data(), static_cast<DWORD>(content.size()), &read, nullptr), 0);
    return content;
  }

 private:
  HANDLE file_;
};

class ParallelPortTest : public ::testing::Test {
 protected:
  ParallelPortTest() {
    Device().Replace("");
    EXPECT_EQ(ScannerGunPortOpen(&handle_, kDevice), VEXO_OK);
  }
  ~ParallelPortTest() override { ScannerGunPortOpen(&handle_, ""); }

  VexoPort* port() { return handle_.port; }

  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
};

TEST_F(ParallelPortTest, JobArrivesByteExact) {
  const std::string job = Pattern(10'000);
  EXPECT_EQ(port()->kind, VEXO_PORT_PARALLEL);
  EXPECT_EQ(Write(port(), job), Written(VEXO_ERROR_IO_NOT_OPEN, 0));
  ASSERT_EQ(port()->Open(port()), VEXO_OK);
  EXPECT_EQ(Write(port(), job), Written(VEXO_OK, 10'000));
  EXPECT_EQ(port()->Close(port()), VEXO_OK);
  EXPECT_TRUE(Device().Content() == job);
  ASSERT_EQ(port()->Open(port()), VEXO_OK);
  EXPECT_EQ(ReadAvailable(port(), 2), Reading(VEXO_OK, 2, Pattern(2))) << "from the beginning of the file";
}

TEST_F(ParallelPortTest, StatusFlagIsKept) {
  const auto control = [this](int32_t code, const uint8_t* input, uint8_t* output) {
    return port()->Control(port(), code, nullptr, input, 1, output, 1, nullptr);
  };
  const uint8_t busy = 5;
  uint8_t flag = 0xEE;
  EXPECT_EQ(control(VEXO_CONTROL_PARALLEL_GET_STATUS, nullptr, &flag), VEXO_OK);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(control(VEXO_CONTROL_PARALLEL_SET_STATUS, &busy, nullptr), VEXO_OK);
  EXPECT_EQ(control(VEXO_CONTROL_PARALLEL_GET_STATUS, nullptr, &flag), VEXO_OK);
  EXPECT_EQ(flag, 5);
  EXPECT_EQ(control(VEXO_CONTROL_PARALLEL_SET_STATUS, nullptr, nullptr), VEXO_ERROR_PARAMETER);
  EXPECT_EQ(control(VEXO_CONTROL_PARALLEL_GET_STATUS, nullptr, nullptr), VEXO_ERROR_BUFFER_TOO_SMALL);
}

TEST_F(ParallelPortTest, MissingDeviceIsTheSystemsError) {
  EXPECT_EQ(ScannerGunPortOpen(&handle_, "LPT9"), VEXO_OK);
  EXPECT_EQ(port()->Open(port()), ERROR_FILE_NOT_FOUND);
}

}  // namespace
}  // namespace vexo::test
