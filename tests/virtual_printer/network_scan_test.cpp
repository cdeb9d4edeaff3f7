#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "test_hosts.h"
#include "virtual_printer/scan_answer.h"

namespace virtual_printer {
namespace {

const std::string kQuestion = "getval \"printer_message\"";

TEST(NetworkScan, EachPortHasAQuestionOfItsOwn) {
  const std::tuple<std::string, bool, bool> rows[] = {
      {kQuestion, true, false},
      {V1(kQuestion), false, true},
      {V1(kQuestion) + "\"192.168.1.7\"\r\n", false, true},
      {V1(kQuestion).substr(0, 32), false, false},
      {"x" + kQuestion, false, false},
      {"", false, false},
  };
  for (const auto& [datagram, receipt, label] : rows) {
    EXPECT_EQ(AsksForPrinters(ScanKind::kReceiptPrinters, datagram), receipt) << datagram;
    EXPECT_EQ(AsksForPrinters(ScanKind::kLabelPrinters, datagram), label) << datagram;
  }
}

NetworkIdentity ThirdPrinter() {
  NetworkIdentity identity;
  identity.number = 3;
  identity.address = {10, 0, 0, 250};
  identity.gateway = {10, 0, 0, 1};
  identity.port = 65535;
  return identity;
}

TEST(NetworkScan, AnswerFitsARecord) {
  NetworkIdentity identity = ThirdPrinter();
  identity.name = identity.state = std::string(32, 'x');
  EXPECT_LE(ScanAnswer(identity).bytes.size(), 255u);
}

TEST(NetworkScan, DetailsAreTakenForACommandAndAnsweredLowByteFirst) {
  PrinterSetup setup;
  setup.identity = ThirdPrinter();
  Shop shop(setup);
  // Neither half a question nor a different one is taken for it, and a file download still begins with the same byte.
  EXPECT_EQ(shop.Send(1,
                      "\x12"
                      "CE\x12"
                      "CEX\x12"),
            (Transcript{"1> print data, 7 bytes"}));
  const auto events = shop.SendRaw(1, "CER\x12\x46");
  EXPECT_EQ(Shop::Note(events), (Transcript{"1> network details wanted", "1< mask 255.255.255.0, gateway 10.0.0.1",
                                            "1> file download", "1< ready for packages"}));
  EXPECT_EQ(Hex(events.at(1).message.bytes),
            "FA00000A"
            "00000000"
            "00FFFFFF"
            "0100000A");
}

}  // namespace
}  // namespace virtual_printer
