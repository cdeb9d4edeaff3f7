// A host in C asks for the print width, over TCP; and ports as the exports open them.
#include "windows/loopback_printer.h"

#include <gtest/gtest.h>

#include <future>

#include "vexo/extend.h"
#include "windows/c_host.h"

namespace vexo::test {
namespace {

TEST(PrintWidthTest, IsAskedByAHostInC) {
  const std::string question("\x1b\x1c& V1 getkey\r\n\x01\xcc\x00\x02", 19);
  LoopbackPrinter printer;
  std::future<std::string> asked = std::async(std::launch::async, [&] {
    Connection connection = printer.Accept();
    const std::string received = connection.Receive(question.size());
    connection.Send(std::string("\x00\x03", 2));
    return received + connection.ReceiveRest();
  });
  uint32_t width = 0;
  EXPECT_EQ(AskPrintWidth(printer.descriptor().c_str(), &width), VEXO_OK);
  EXPECT_EQ(width, 768U);
  EXPECT_EQ(asked.get(), question);
}

TEST(PortExportsTest, OpenPortsOfThisSystem) {
  VexoPrinterHandle handle = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
  const struct {
    decltype(&ScannerGunPortOpen) open;
    const char* text;
    int32_t result;
    bool leaves_port;
  } kCases[] = {
      {DiskPortOpen, "NET,127.0.0.1,1", VEXO_ERROR_USB_NOT_FOUND, true},
      {ScannerPortOpen, "USB", VEXO_ERROR_USB_NOT_FOUND, true},
      {ScannerGunPortOpen, "USB", VEXO_ERROR_USB_NOT_FOUND, true},
      {ScannerGunPortOpen, "vexo:/dev/bus/XYZ/DEVICE", VEXO_ERROR_NOT_SUPPORTED_PRINTER, false},
      {ScannerGunPortOpen, "COM255,9600", ERROR_FILE_NOT_FOUND, true},
      {ScannerGunPortOpen, nullptr, VEXO_ERROR_IO_SETTING, false},
      // Left to their users to open: nobody listens there.
      {ScannerGunPortOpen, "BT,001122334455", VEXO_OK, true},
      {ScannerGunPortOpen, "NET,127.0.0.1,1", VEXO_OK, true},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.text != nullptr ? test.text : "null");
    EXPECT_EQ(test.open(&handle, test.text), test.result);
    EXPECT_EQ(handle.portOpen, test.result == VEXO_OK ? 1 : 0);
    EXPECT_EQ(handle.port != nullptr, test.leaves_port);
  }
  VexoPort* const port = handle.port;
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->magic, VEXO_PORT_MAGIC);
  EXPECT_EQ(port->kind, VEXO_PORT_NET);
  EXPECT_EQ(ScannerGunPortOpen(&handle, ""), VEXO_ERROR_IO_SETTING);
  EXPECT_EQ(handle.port, nullptr);
  EXPECT_EQ(port->CheckOpen(port), VEXO_ERROR_HANDLE);
}

}  // namespace
}  // namespace vexo::test
