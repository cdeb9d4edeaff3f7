// The exports that put ports into printer handles.
#include <gtest/gtest.h>

#include "vexo/extend.h"

namespace vexo {
namespace {

using PortOpen = decltype(&ScannerGunPortOpen);

class PortExportTest : public ::testing::Test {
 protected:
  ~PortExportTest() override { ScannerGunPortOpen(&handle_, ""); }

  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
};

TEST_F(PortExportTest, TextsAreJudgedInTheSameWayByAll) {
  const struct {
    const char* text;
    int32_t result;
  } kCases[] = {
      {nullptr, VEXO_ERROR_IO_SETTING},
      {"", VEXO_ERROR_IO_SETTING},
      {"US", VEXO_ERROR_IO_SETTING},
      {"NET", VEXO_ERROR_IO_SETTING},
      {"XYZ,1", VEXO_ERROR_IO_SETTING},
      {"vexo:/dev/bus/NET", VEXO_ERROR_IO_SETTING},
      {"vexo:/dev/bus/XYZ/DEVICE", VEXO_ERROR_NOT_SUPPORTED_PRINTER},
      {"FILE,out.prn", VEXO_ERROR_NOT_SUPPORTED_PRINTER},
      {"COM1,9600", VEXO_ERROR_NOT_SUPPORTED_PRINTER},
      {"BT,001122334455", VEXO_ERROR_NOT_SUPPORTED_PRINTER},
      {"USB", VEXO_ERROR_USB_NOT_FOUND},
  };
  for (const auto& [text, result] : kCases) {
    SCOPED_TRACE(text != nullptr ? text : "null");
    for (const PortOpen open : {DiskPortOpen, ScannerPortOpen, ScannerGunPortOpen}) {
      EXPECT_EQ(open(&handle_, text), result);
      EXPECT_EQ(handle_.portOpen, 0);
      EXPECT_EQ(handle_.port != nullptr, result == VEXO_ERROR_USB_NOT_FOUND);
    }
  }
}

TEST_F(PortExportTest, WrongHandlesAreRefused) {
  handle_.magic = 559;
  uint32_t width = 0;
  for (VexoPrinterHandle* const handle : {&handle_, static_cast<VexoPrinterHandle*>(nullptr)}) {
    for (const PortOpen open : {DiskPortOpen, ScannerPortOpen, ScannerGunPortOpen}) {
      EXPECT_EQ(open(handle, "NET,127.0.0.1"), VEXO_ERROR_HANDLE);
    }
    EXPECT_EQ(SetPrintWidth(handle, 576), VEXO_ERROR_HANDLE);
    EXPECT_EQ(GetPrintWidth(handle, &width), VEXO_ERROR_HANDLE);
  }
  EXPECT_EQ(handle_.port, nullptr);
}

TEST_F(PortExportTest, ScannerGunMakesOtherPortsWithoutOpeningThem) {
  // Nobody listens there: connecting would fail.
  ASSERT_EQ(ScannerGunPortOpen(&handle_, "NET,127.0.0.1,1"), VEXO_OK);
  EXPECT_EQ(handle_.portOpen, 1);
  VexoPort* const port = handle_.port;
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->magic, VEXO_PORT_MAGIC);
  EXPECT_EQ(port->kind, VEXO_PORT_NET);
  uint8_t byte = 0;
  EXPECT_EQ(port->Write(port, &byte, 0, 1, nullptr), VEXO_ERROR_IO_NOT_OPEN);
  EXPECT_EQ(DiskPortOpen(&handle_, "NET,127.0.0.1,1"), VEXO_ERROR_USB_NOT_FOUND);
  EXPECT_EQ(handle_.portOpen, 0);
}

TEST_F(PortExportTest, EmptyTextGivesThePortBack) {
  ASSERT_EQ(ScannerGunPortOpen(&handle_, "NET,127.0.0.1,1"), VEXO_OK);
  VexoPort* const port = handle_.port;
  EXPECT_EQ(ScannerGunPortOpen(&handle_, ""), VEXO_ERROR_IO_SETTING);
  EXPECT_EQ(handle_.port, nullptr);
  EXPECT_EQ(handle_.portOpen, 0);
  EXPECT_EQ(port->CheckOpen(port), VEXO_ERROR_HANDLE);
}

}  // namespace
}  // namespace vexo
