// The network details that a scan requests from each printer found.
#include "discovery/scan_follow_up.h"

#include <atomic>
#include <map>
#include <mutex>

#include "core/driver_test.h"
#include "support/threads.h"

namespace vexo::test {
namespace {

class ScanFollowUps : public DriverTest {
 protected:
  static std::string Answer(const std::string& address) { return address + "\r\nready"; }

  // Requests the details and returns the completed list.
  std::string Ask(const std::vector<std::string>& addresses) {
    ScanList list;
    for (const std::string& address : addresses) {
      list.Add(Answer(address));
    }
    AskScannedPrinters(&list);
    return list.Text();
  }

  // Number of connections for each address.
  static std::map<std::string, int> ConnectionCounts() {
    std::map<std::string, int> asked;
    for (const std::string& call : DriverCalls()) {
      const std::string begin = "NET Configure vexo:/dev/bus/NET/DEVICE?ip=";
      if (call.rfind(begin, 0) == 0) {
        ++asked[call.substr(begin.size())];
      }
    }
    return asked;
  }
};

TEST_F(ScanFollowUps, ConnectOncePerAddressAndCompleteAllItsRecords) {
  DriverScript script;
  std::mutex mutex;
  std::vector<std::string> questions;
  script.on_write = [&](const uint8_t* bytes, uint32_t length) {
    const std::lock_guard<std::mutex> guard(mutex);
    questions.emplace_back(bytes, bytes + length);
    return VEXO_OK;
  };
  script.on_read = [](uint8_t* buffer, uint32_t /*room*/) {
    const std::string reply("........\x01\x02\xa8\xc0\x00\xff\xff\xff", 16);
    std::copy(reply.begin(), reply.end(), buffer);
    return static_cast<uint32_t>(reply.size());
  };
  SetDriverScript(script);
  const std::string with_details = ";ready;;;;;;;;;192.168.2.1;255.255.255.0;;;;|";
  const std::string without_details = ";ready;;;;;;;;;;;;;;|";
  EXPECT_EQ(Ask({"10.0.0.1", "10.0.0.2", "10.0.0.1", "printer.example", "10.0.0.1"}),
            "10.0.0.1" + with_details + "10.0.0.2" + with_details + "10.0.0.1" + with_details + "printer.example" +
                without_details + "10.0.0.1" + with_details);
  EXPECT_EQ(ConnectionCounts(), (std::map<std::string, int>{{"10.0.0.1+port=9100", 1}, {"10.0.0.2+port=9100", 1}}));
  EXPECT_EQ(questions, std::vector<std::string>(2,
                                                "\x12"
                                                "CER"));
}

// At most sixteen connections at a time, and none after the time limit. All threads advance the same clock.
TEST_F(ScanFollowUps, AreLimitedInTimeAndNumber) {
  std::atomic<int> at_once{0};
  std::atomic<int> most{0};
  DriverScript script;
  script.on_open = [&] {
    ++at_once;
    EXPECT_TRUE(Eventually([&] { return at_once >= kMostFollowUps || most > 0; }));
    for (int moment = 0; moment < 1000; ++moment) {
      std::this_thread::yield();  // Gives a surplus thread time to connect.
    }
    most = std::max(most.load(), at_once.load());
    AdvanceClock(kFollowUpLimitMs);
    return VEXO_ERROR_IO_OPEN_FAILED;
  };
  SetDriverScript(script);
  std::vector<std::string> addresses;
  std::string expected;
  for (int i = 0; i < 1000; ++i) {
    addresses.push_back("10.0." + std::to_string(i / 250) + '.' + std::to_string(i % 250));
    expected += addresses.back() + ";ready;;;;;;;;;;;;;;|";
  }
  SetClock(0);
  EXPECT_EQ(Ask(addresses), expected);
  EXPECT_EQ(most, kMostFollowUps);
  EXPECT_EQ(ConnectionCounts().size(), static_cast<size_t>(kMostFollowUps));
}

}  // namespace
}  // namespace vexo::test
