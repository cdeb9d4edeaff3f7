// The print width, from the host's call to the printer's answer and back, over TCP; and the ports that carry it.
#include "windows/loopback_printer.h"

#include <gtest/gtest.h>

#include <future>

#include "vexo/extend.h"
#include "windows/c_host.h"

namespace vexo::test {
namespace {

const std::string kGetKey("\x1b\x1c& V1 getkey\r\n\x01\xcc\x00\x02", 19);
const std::string kSetKey("\x1b\x1c& V1 setkey\r\n\x01\xcc\x00\x02", 19);  // The two bytes of the width follow.
const std::string kSave("\x1b\x1c& V1 do \"save_param_zone\"\r\n");

class WidthExportTest : public ::testing::Test {
 protected:
  ~WidthExportTest() override { ScannerGunPortOpen(&handle_, ""); }

  // `silence_ms`: how long the library waits for an answer.
  void Connect(uint32_t silence_ms = 20'000) {
    ASSERT_EQ(ScannerGunPortOpen(&handle_, printer_.descriptor().c_str()), VEXO_OK);
    ASSERT_EQ(handle_.port->SetTimeouts(handle_.port, {100, 0, silence_ms, 0, 20'000, 20'000}), VEXO_OK);
    ASSERT_EQ(handle_.port->Open(handle_.port), VEXO_OK);
  }

  // The printer takes commands of these lengths and sends the answers; its result is all that it received.
  using Exchange = std::pair<size_t, std::string>;
  std::future<std::string> Serve(const std::vector<Exchange>& exchanges) {
    return std::async(std::launch::async, [=] {
      Connection connection = printer_.Accept();
      std::string received;
      for (const auto& [length, answer] : exchanges) {
        received += connection.Receive(length);
        connection.Send(answer);
      }
      return received + connection.ReceiveRest();
    });
  }

  void Disconnect() { handle_.port->Close(handle_.port); }

  LoopbackPrinter printer_;
  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
};

TEST_F(WidthExportTest, SetNeedsTheConfirmationOfTheStoring) {
  const struct {
    const char* scenario;
    std::string acknowledgement;
    std::string confirmation;
    int32_t result;
  } kCases[] = {
      {"stored", "ack", std::string(1, '\0'), VEXO_OK},
      {"no acknowledgement", "", std::string(1, '\0'), VEXO_OK},
      {"refused", "ack", "\x01", VEXO_ERROR_IO_READ},
      {"no answer at all", "", "", VEXO_ERROR_IO_READ},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.scenario);
    std::future<std::string> received = Serve({{21, test.acknowledgement}, {29, test.confirmation}});
    Connect(test.result == VEXO_OK ? 1000 : 100);
    EXPECT_EQ(SetPrintWidth(&handle_, 0x1ABCD), test.result);
    Disconnect();
    EXPECT_EQ(received.get(), kSetKey + "\xCD\xAB" + kSave);
  }
}

TEST_F(WidthExportTest, GetGivesTheWidthOfAWholeAnswerAlsoAfterADrop) {
  Connect();
  printer_.Accept().Close();
  std::future<std::string> received = Serve({{19, "\x40\x02"}});
  uint32_t width = 0;
  EXPECT_EQ(GetPrintWidth(&handle_, &width), VEXO_OK);
  EXPECT_EQ(width, 576U);
  Disconnect();
  EXPECT_EQ(received.get(), kGetKey);
  EXPECT_EQ(GetPrintWidth(&handle_, &width), VEXO_ERROR_IO_NOT_OPEN);

  received = Serve({{19, "\x41"}});
  Connect(100);
  EXPECT_EQ(GetPrintWidth(&handle_, &width), VEXO_ERROR_IO_READ_TIMEOUT);
  EXPECT_EQ(width, 576U);
  Disconnect();
  EXPECT_EQ(received.get(), kGetKey);
}

TEST_F(WidthExportTest, HostMayBeWrittenInC) {
  std::future<std::string> received = Serve({{19, std::string("\x00\x03", 2)}});
  uint32_t width = 0;
  EXPECT_EQ(AskPrintWidth(printer_.descriptor().c_str(), &width), VEXO_OK);
  EXPECT_EQ(width, 768U);
  EXPECT_EQ(received.get(), kGetKey);
}

TEST_F(WidthExportTest, PortsOfThisSystem) {
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
    EXPECT_EQ(test.open(&handle_, test.text), test.result);
    EXPECT_EQ(handle_.portOpen, test.result == VEXO_OK ? 1 : 0);
    EXPECT_EQ(handle_.port != nullptr, test.leaves_port);
  }
  VexoPort* const port = handle_.port;
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(port->magic, VEXO_PORT_MAGIC);
  EXPECT_EQ(port->kind, VEXO_PORT_NET);
  EXPECT_EQ(ScannerGunPortOpen(&handle_, ""), VEXO_ERROR_IO_SETTING);
  EXPECT_EQ(handle_.port, nullptr);
  EXPECT_EQ(port->CheckOpen(port), VEXO_ERROR_HANDLE);
}

}  // namespace
}  // namespace vexo::test
