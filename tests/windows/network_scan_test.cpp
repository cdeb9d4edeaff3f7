// Scans of the network on loopback sockets: the test is the printers.
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

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int64_t kTimeLimitMs = 500;
constexpr char kReceiptQuestion[] = "getval \"printer_message\"";
constexpr char kLabelQuestion[] = "\x1b\x1c& V1 getval \"printer_message\"\r\n\"";  // The host's address follows.

// An answer without an address: nobody is asked over TCP.
std::string Ready(const std::string& name) { return "\r\nready\r\n" + name + '\0'; }
std::string Record(const std::string& name) { return ";ready;" + name + ";;;;;;;;;;;;;|"; }

sockaddr_in AddressOf(const std::string& ip, uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = inet_addr(ip.c_str());
  address.sin_port = htons(port);
  return address;
}

// Where printers are asked who they are.
class QuestionSocket {
 public:
  QuestionSocket(const std::string& ip, uint16_t port) : socket_(::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP)) {
    const BOOL shared = TRUE;  // With the library, which listens on the port of every address.
    setsockopt(socket_.get(), SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&shared), sizeof(shared));
    const sockaddr_in address = AddressOf(ip, port);
    EXPECT_EQ(bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0)
        << WSAGetLastError();
  }

  // Empty when none comes.
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

  void Answer(const std::string& answer) { AnswerTo(host_, answer); }

  void AnswerTo(const sockaddr_in& host, const std::string& answer) {
    sendto(socket_.get(), answer.data(), static_cast<int>(answer.size()), 0, reinterpret_cast<const sockaddr*>(&host),
           sizeof(host));
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
  NetworkScanTest() : ip_(OwnIp()), questions_(ip_, GetParam().port) {}
  ~NetworkScanTest() override { WSACleanup(); }

  int32_t Scan(int64_t time_limit_ms = kTimeLimitMs, int32_t size = kRoom) {
    text_.assign(kRoom + 1, '#');
    const int32_t result = GetParam().scan(time_limit_ms, text_.data(), size, ip_.c_str());
    text_.resize(result == VEXO_OK ? strlen(text_.c_str()) : 0);
    return result;
  }

  // A scan that these answers come to, in one burst.
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

  const std::string ip_;
  QuestionSocket questions_;
  std::string question_;
  std::string text_;

 private:
  // An address that no other test run on this machine uses.
  static std::string OwnIp() {
    WSADATA data = {};
    EXPECT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
    const DWORD process = GetCurrentProcessId();
    return "127.10." + std::to_string(process / 4 % 250) + '.' + std::to_string(process % 4 + 1);
  }
};

INSTANTIATE_TEST_SUITE_P(Exports, NetworkScanTest,
                         ::testing::Values(Variant{"ScanPos", ScanPos, 3289, kReceiptQuestion},
                                           Variant{"ScanLabel", ScanLabel, 6000, kLabelQuestion}),
                         [](const auto& variant) { return std::string(variant.param.name); });

TEST_P(NetworkScanTest, ReadyPrintersAreListed) {
  // As many as the smallest buffer of a socket holds, whenever this thread gets to run.
  std::vector<std::string> answers = {Ready("one"), "\r\nbusy\r\n", Ready("two"), "junk", Ready("one")};
  std::string expected = Record("one") + Record("two") + Record("one");
  for (const char* const name : {"3", "4", "5", "6", "7", "8", "9", "10", "11", "12"}) {
    answers.push_back(Ready(name));
    expected += Record(name);
  }
  EXPECT_EQ(ScanWithAnswers(answers), VEXO_OK);
  EXPECT_EQ(text_, expected);
  EXPECT_EQ(ScanWithAnswers({"\r\nReady\r\n"}), VEXO_ERROR_NO_PRINTER);

  const bool label = GetParam().scan == ScanLabel;
  const std::string begin = GetParam().question;
  EXPECT_EQ(question_.substr(0, begin.size()), begin);
  if (label) {
    const std::string rest = question_.substr(begin.size());
    EXPECT_EQ(rest.substr(rest.find_first_not_of("0123456789.")), "\"\r\n");
    EXPECT_NE(inet_addr(rest.substr(0, rest.find('"')).c_str()), INADDR_NONE);
  } else {
    EXPECT_EQ(question_, begin);
  }

  EXPECT_EQ(ScanWithAnswers({Ready("a printer_message")}), label ? VEXO_ERROR_NO_PRINTER : VEXO_OK);
}

TEST_P(NetworkScanTest, ShortAnswerEndsInTheRemainderOfALongerOne) {
  const std::string longest = Ready(std::string(2048 - 9 - 3, 'x')).substr(0, 2045) + "end";
  ASSERT_EQ(longest.size(), 2048U);
  EXPECT_EQ(ScanWithAnswers({longest, "\r\nready\r\nabc"}), VEXO_OK);
  const std::string cut = ";ready;" + std::string(248, 'x') + '|';
  EXPECT_EQ(text_, cut + ";ready;abc" + std::string(245, 'x') + '|');
}

// Printers may answer to the port that they listen on.
TEST_P(NetworkScanTest, AnswersToThePortOfTheScanAreHeard) {
  questions_ = QuestionSocket(ip_, 0);
  std::atomic<bool> ended(false);
  const std::future<void> printer = std::async(std::launch::async, [&] {
    while (!ended) {
      questions_.AnswerTo(AddressOf("127.0.0.1", GetParam().port), Ready("x"));
      Sleep(10);
    }
  });
  int32_t result = VEXO_ERROR_NO_PRINTER;
  for (int i = 0; i < 30 && result != VEXO_OK; ++i) {
    result = Scan();  // Other programs may have the port for a while.
  }
  EXPECT_EQ(result, VEXO_OK);
  ended = true;
}

TEST_P(NetworkScanTest, ReadyPrintersTellTheirAddressesOverTcp) {
  LoopbackPrinter printer(PrinterState::kListening, ip_, 9100);
  std::future<std::string> questions = std::async(std::launch::async, [&] {
    std::string received;
    for (const size_t length : {16, 12, 11}) {
      Connection connection = printer.Accept();
      received += connection.Receive(4);
      connection.Send(std::string("........\x01\x02\xa8\xc0\x00\xff\xff\xff", 16).substr(0, length));
      received += connection.ReceiveRest();
    }
    return received;
  });
  const std::string answer = ip_ + "\r\nready\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n8\r\n9\r\na\r\nb\r\nc" + '\0';
  EXPECT_EQ(ScanWithAnswers({answer, answer, Ready("nowhere"), answer}), VEXO_OK);
  const std::string begin = ip_ + ";ready;2;3;4;5;6;7;8;9;";
  EXPECT_EQ(text_, begin + "192.168.2.1;255.255.255.0;c;;;|" + begin + "192.168.2.1;b;c;;;|" + Record("nowhere") +
                       begin + "a;b;c;;;|");
  EXPECT_EQ(questions.get(),
            "\x12"
            "CER\x12"
            "CER\x12"
            "CER");
}

TEST_P(NetworkScanTest, PrinterThatCannotBeConnectedToKeepsItsFields) {
  const LoopbackPrinter refusing(PrinterState::kRefusing, ip_, 9100);
  EXPECT_EQ(ScanWithAnswers({ip_ + "\r\nready\r\nx" + '\0', Ready("y")}), VEXO_OK);
  EXPECT_EQ(text_, ip_ + Record("x") + Record("y"));
}

TEST_P(NetworkScanTest, TextThatIsLongerThanTheSizeIsNotHandedOver) {
  const std::string record = Record("abc");
  EXPECT_EQ(ScanWithAnswers({Ready("abc")}, static_cast<int32_t>(record.size())), VEXO_OK);
  EXPECT_EQ(text_, record);
  EXPECT_EQ(ScanWithAnswers({Ready("abc")}, static_cast<int32_t>(record.size()) - 1), VEXO_ERROR_BUFFER_TOO_SMALL);
}

TEST_P(NetworkScanTest, WithoutTimeTheQuestionIsSentAllTheSame) {
  for (const int64_t limit : {int64_t{0}, INT64_MIN}) {
    EXPECT_EQ(Scan(limit), VEXO_ERROR_NO_PRINTER);
    EXPECT_EQ(questions_.Receive().rfind(GetParam().question, 0), 0U);
  }
  EXPECT_EQ(GetParam().scan(1, nullptr, 256, ip_.c_str()), VEXO_ERROR_PARAMETER);
  EXPECT_EQ(GetParam().scan(1, text_.data(), 0, nullptr), VEXO_ERROR_PARAMETER);
}

// However short the turns are, the time limit holds to 20 ms. This machine may be late now and then, not always.
TEST_P(NetworkScanTest, TimeLimitHoldsUnderAFlood) {
  constexpr milliseconds kLimit(200);
  auto late = steady_clock::duration::max();
  for (int i = 0; i < 20 && late > milliseconds(20); ++i) {
    std::atomic<bool> ended(false);
    std::future<steady_clock::time_point> flood = std::async(std::launch::async, [&] {
      questions_.Receive();
      const auto asked = steady_clock::now();
      while (!ended) {
        questions_.Answer("\r\nbusy");
      }
      return asked;
    });
    const auto started = steady_clock::now();
    EXPECT_EQ(Scan(kLimit.count()), VEXO_ERROR_NO_PRINTER);
    const auto finished = steady_clock::now();
    ended = true;
    EXPECT_GE(finished - started, kLimit);
    late = finished - flood.get() - kLimit;
  }
  EXPECT_LE(late, milliseconds(20));
}

TEST_P(NetworkScanTest, NothingIsLeftBehind) {
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
