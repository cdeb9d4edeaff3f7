// Network scans on loopback sockets. The test acts as the printers.
#include "windows/loopback_printer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <string>
#include <vector>

#include "vexo/extend.h"
#include "windows/process_resources.h"

namespace vexo::test {
namespace {

constexpr int64_t kTimeLimitMs = 500;
constexpr char kReceiptQuestion[] = "getval \"printer_message\"";
constexpr char kLabelQuestion[] = "\x1b\x1c& V1 getval \"printer_message\"\r\n\"";  // The host's address follows.

// An answer without an address, so the scan makes no TCP connection.
std::string Ready(const std::string& name) { return "\r\nready\r\n" + name + '\0'; }
std::string Record(const std::string& name) { return ";ready;" + name + ";;;;;;;;;;;;;|"; }

// The printers' UDP socket.
class QuestionSocket {
 public:
  QuestionSocket(const std::string& ip, uint16_t port) : socket_(::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP)) {
    const BOOL shared = TRUE;  // The library binds the same port on all addresses.
    setsockopt(socket_.get(), SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&shared), sizeof(shared));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = inet_addr(ip.c_str());
    address.sin_port = htons(port);
    EXPECT_EQ(bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0)
        << WSAGetLastError();
  }

  // The next question; empty if none arrives.
  std::string Receive() {
    fd_set set = {};
    FD_SET(socket_.get(), &set);
    timeval limit = {30, 0};
    char question[256];
    int size = sizeof(host_);
    const int length =
        select(0, &set, nullptr, nullptr, &limit) == 1
            ? recvfrom(socket_.get(), question, sizeof(question), 0, reinterpret_cast<sockaddr*>(&host_), &size)
            : 0;
    return {question, static_cast<size_t>(std::max(length, 0))};
  }

  void Answer(const std::string& answer) {
    sendto(socket_.get(), answer.data(), static_cast<int>(answer.size()), 0, reinterpret_cast<const sockaddr*>(&host_),
           sizeof(host_));
  }

 private:
  Socket socket_;
  sockaddr_in host_ = {};
};

struct Variant {
  const char* name;
  decltype(&ScanPos) scan;
  uint16_t port;
  const char* question;
};

class NetworkScanTest : public ::testing::TestWithParam<Variant> {
 protected:
  NetworkScanTest() : questions_(ip_, GetParam().port) {}
  ~NetworkScanTest() override { WSACleanup(); }

  int32_t Scan(int64_t time_limit_ms = kTimeLimitMs, int32_t size = kRoom) {
    text_.assign(kRoom + 1, '#');
    const int32_t result = GetParam().scan(time_limit_ms, text_.data(), size, ip_.c_str());
    text_.resize(result == VEXO_OK ? strlen(text_.c_str()) : 0);
    return result;
  }

  // Scans with these answers, sent in one burst.
  int32_t ScanWithAnswers(const std::vector<std::string>& answers, int32_t size = kRoom) {
    const std::future<void> printers = std::async(std::launch::async, [&] {
      question_ = questions_.Receive();
      for (const std::string& answer : answers) {
        questions_.Answer(answer);
      }
    });
    return Scan(kTimeLimitMs, size);
  }

  static constexpr int32_t kRoom = 64 * 256;

  WSADATA winsock_ = {};
  const int winsock_error_ = WSAStartup(MAKEWORD(2, 2), &winsock_);
  const std::string ip_ = OwnIp("127.10");
  QuestionSocket questions_;
  std::string question_;
  std::string text_;
};

INSTANTIATE_TEST_SUITE_P(Exports, NetworkScanTest,
                         ::testing::Values(Variant{"ScanPos", ScanPos, 3289, kReceiptQuestion},
                                           Variant{"ScanLabel", ScanLabel, 6000, kLabelQuestion}),
                         [](const auto& variant) { return std::string(variant.param.name); });

TEST_P(NetworkScanTest, ReadyPrintersAreListed) {
  // As many answers as the smallest socket buffer holds, in case the scan's thread runs late.
  std::vector<std::string> answers = {Ready("one"), "\r\nbusy\r\n", Ready("two"), "junk", Ready("one")};
  std::string expected = Record("one") + Record("two") + Record("one");
  for (const char* const name : {"3", "4", "5", "6", "7", "8", "9", "10", "11", "12"}) {
    answers.push_back(Ready(name));
    expected += Record(name);
  }
  EXPECT_EQ(ScanWithAnswers(answers), VEXO_OK);
  EXPECT_EQ(text_, expected);
  EXPECT_EQ(ScanWithAnswers({Ready("one"), "", Ready("two")}), VEXO_OK);
  EXPECT_EQ(text_, Record("one")) << "an empty datagram ends the scan";
  EXPECT_EQ(ScanWithAnswers({"\r\nReady\r\n"}), VEXO_ERROR_NO_PRINTER);
  EXPECT_EQ(ScanWithAnswers({Ready("one")}, static_cast<int32_t>(Record("one").size()) - 1),
            VEXO_ERROR_BUFFER_TOO_SMALL);

  const bool label = GetParam().scan == ScanLabel;
  const std::string begin = GetParam().question;
  EXPECT_EQ(question_.substr(0, begin.size()), begin);
  const std::string rest = question_.substr(begin.size());
  const size_t address_size = rest.find_first_not_of("0123456789.");
  EXPECT_EQ(rest.substr(std::min(address_size, rest.size())), label ? "\"\r\n" : "");
  EXPECT_EQ(inet_addr(rest.substr(0, address_size).c_str()) != INADDR_NONE, label);

  EXPECT_EQ(ScanWithAnswers({Ready("a printer_message")}), label ? VEXO_ERROR_NO_PRINTER : VEXO_OK);
}

TEST_P(NetworkScanTest, ShortAnswerIsFollowedByTheRestOfALongerOne) {
  const std::string longest = Ready(std::string(2048 - 9 - 3, 'x')).substr(0, 2045) + "end";
  ASSERT_EQ(longest.size(), 2048U);
  EXPECT_EQ(ScanWithAnswers({longest, "\r\nready\r\nabc"}), VEXO_OK);
  const std::string cut = ";ready;" + std::string(248, 'x') + '|';
  EXPECT_EQ(text_, cut + ";ready;abc" + std::string(245, 'x') + '|');
}

TEST_P(NetworkScanTest, AddressesAreRequestedOverTcp) {
  LoopbackPrinter printer(PrinterState::kListening, ip_, 9100);
  std::future<std::string> question = std::async(std::launch::async, [&] {
    Connection connection = printer.Accept();
    const std::string received = connection.Receive(4);
    connection.Send(std::string("........\x01\x02\xa8\xc0\x00\xff\xff\xff", 16));
    return received + connection.ReceiveRest();
  });
  EXPECT_EQ(ScanWithAnswers({ip_ + "\r\nready\r\nc" + '\0', Ready("nowhere")}), VEXO_OK);
  EXPECT_EQ(text_, ip_ + ";ready;c;;;;;;;;192.168.2.1;255.255.255.0;;;;|" + Record("nowhere"));
  EXPECT_EQ(question.get(),
            "\x12"
            "CER");
}

// Forged answers with unreachable addresses must not prolong the scan.
TEST_P(NetworkScanTest, ForgedAnswersDoNotBlockTheScan) {
  constexpr int kForged = 40;
  const std::string network = OwnIp("127.11");
  std::string expected;
  std::vector<std::string> answers;
  for (int i = 0; i < kForged; ++i) {
    const std::string address = network.substr(0, network.rfind('.') + 1) + std::to_string(100 + i);
    answers.push_back(address + "\r\nready\r\n" + '\0');
    expected += address + Record("");
  }
  const std::future<void> forger = std::async(std::launch::async, [&] {
    questions_.Receive();
    for (const std::string& answer : answers) {
      questions_.Answer(answer);
      Sleep(1);  // The library's socket has a small buffer.
    }
  });
  std::future<int32_t> scan = std::async(std::launch::async, [&] { return Scan(); });
  EXPECT_EQ(scan.wait_for(std::chrono::seconds(60)), std::future_status::ready);
  EXPECT_EQ(scan.get(), VEXO_OK);
  EXPECT_EQ(text_, expected);
}

TEST_P(NetworkScanTest, QuestionIsSentEvenWithoutTime) {
  EXPECT_EQ(Scan(INT64_MIN), VEXO_ERROR_NO_PRINTER);
  EXPECT_EQ(questions_.Receive().rfind(GetParam().question, 0), 0U);
  EXPECT_EQ(GetParam().scan(1, nullptr, 256, ip_.c_str()), VEXO_ERROR_PARAMETER);
  EXPECT_EQ(GetParam().scan(1, text_.data(), 0, nullptr), VEXO_ERROR_PARAMETER);
}

TEST_P(NetworkScanTest, FloodDoesNotBlockTheScan) {
  std::atomic<bool> ended(false);
  const std::future<void> flood = std::async(std::launch::async, [&] {
    questions_.Receive();
    while (!ended) {
      questions_.Answer("\r\nbusy");
    }
  });
  const auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(Scan(200), VEXO_ERROR_NO_PRINTER);
  EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(200));
  ended = true;
}

TEST_P(NetworkScanTest, LeaksNoHandles) {
  Scan(1);
  const size_t handles = CountHandles();
  for (int i = 0; i < 20; ++i) {
    Scan(1);
  }
  EXPECT_EQ(CountHandles(), handles);
}

TEST(ScanSnmpTest, IsNotSupported) { EXPECT_EQ(ScanSnmp(), VEXO_ERROR_NOT_SUPPORTED_PRINTER); }

}  // namespace
}  // namespace vexo::test
