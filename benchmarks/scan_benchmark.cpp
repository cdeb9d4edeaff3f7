// What a network scan costs beyond its time limit, compared with asking the same printers over bare sockets, and what
// reading the printers' answers costs, compared with copying them.

// winsock2.h must come before windows.h.
#include <winsock2.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <future>
#include <string>
#include <vector>

#include "discovery/scan_answer.h"
#include "measure.h"
#include "platform/clock.h"
#include "vexo/extend.h"

namespace vexo::benchmark {
namespace {

constexpr char kIp[] = "127.11.0.1";
constexpr u_short kScanPort = 3289;
constexpr u_short kTcpPort = 9100;
constexpr char kQuestion[] =
    "\x12"
    "CER";
constexpr int kQuestionLength = 4;
constexpr int kReplyLength = 16;
constexpr uint32_t kPauseMs = 20;  // Of whoever finds that the reply is not there yet.
constexpr int64_t kTimeLimitMs = 300;
constexpr int kRounds = 9;

constexpr int kAnswers = 10'000;
constexpr int kParsingRounds = 101;

void Require(bool succeeded, const char* what) {
  if (!succeeded) {
    std::fprintf(stderr, "benchmark: %s failed\n", what);
    std::_Exit(1);
  }
}

sockaddr_in AddressOf(u_short port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = inet_addr(kIp);
  address.sin_port = htons(port);
  return address;
}

SOCKET BoundSocket(int type, u_short port) {
  const SOCKET bound = socket(AF_INET, type, 0);
  const BOOL reused = TRUE;  // After the printers before.
  setsockopt(bound, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&reused), sizeof(reused));
  const sockaddr_in address = AddressOf(port);
  Require(bind(bound, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0, "bind");
  return bound;
}

std::string Answer(int printer) {
  std::string answer = std::string(kIp) + "\r\nready\r\nKM451\r\n1.0." + std::to_string(printer);
  for (int line = 4; line < 16; ++line) {
    answer += "\r\nfield " + std::to_string(line);
  }
  return answer + '\0';
}

// All printers are one, in this process.
class Printers {
 public:
  explicit Printers(int count)
      : count_(count), questions_(BoundSocket(SOCK_DGRAM, kScanPort)), listener_(BoundSocket(SOCK_STREAM, kTcpPort)) {
    Require(listen(listener_, SOMAXCONN) == 0, "listen");
    scans_ = std::async(std::launch::async, [this] { AnswerScans(); });
    connections_ = std::async(std::launch::async, [this] { ServeConnections(); });
  }
  Printers(const Printers&) = delete;
  Printers& operator=(const Printers&) = delete;
  ~Printers() {
    closesocket(questions_);
    closesocket(listener_);
  }

 private:
  void AnswerScans() const {
    char question[64];
    sockaddr_in host = {};
    for (int size = sizeof(host);
         recvfrom(questions_, question, sizeof(question), 0, reinterpret_cast<sockaddr*>(&host), &size) > 0;) {
      for (int i = 0; i < count_; ++i) {
        const std::string answer = Answer(i);
        sendto(questions_, answer.data(), static_cast<int>(answer.size()), 0, reinterpret_cast<const sockaddr*>(&host),
               sizeof(host));
        Sleep(1);  // The library's socket has a small buffer, and this host is faster than any network.
      }
    }
  }

  void ServeConnections() const {
    for (SOCKET host = accept(listener_, nullptr, nullptr); host != INVALID_SOCKET;
         host = accept(listener_, nullptr, nullptr)) {
      char question[kQuestionLength];
      const char reply[kReplyLength] = {};
      if (recv(host, question, kQuestionLength, 0) == kQuestionLength) {
        send(host, reply, kReplyLength, 0);
        recv(host, question, 1, 0);  // Until the host has closed the connection.
      }
      closesocket(host);
    }
  }

  const int count_;
  const SOCKET questions_;
  const SOCKET listener_;
  std::future<void> scans_;
  std::future<void> connections_;
};

bool BareFollowUp() {
  const SOCKET bare = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  const sockaddr_in address = AddressOf(kTcpPort);
  bool succeeded = connect(bare, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
                   send(bare, kQuestion, kQuestionLength, 0) == kQuestionLength;
  u_long available = 0;
  while (succeeded && available == 0) {
    ioctlsocket(bare, FIONREAD, &available);
    if (available == 0) {
      platform::SleepMs(kPauseMs);
    }
  }
  char reply[kReplyLength];
  succeeded = succeeded && recv(bare, reply, kReplyLength, 0) == kReplyLength;
  closesocket(bare);
  return succeeded;
}

void MeasureScan(int count) {
  const Printers printers(count);
  std::vector<char> list(static_cast<size_t>(count) * 256 + 1);
  std::vector<double> product_seconds;
  std::vector<double> bare_seconds;
  for (int round = 0; round < kRounds; ++round) {
    const double scan = Seconds([&] {
      Require(ScanPos(kTimeLimitMs, list.data(), static_cast<int32_t>(list.size()) - 1, kIp) == VEXO_OK, "scan");
    });
    Require(std::count(list.begin(), list.end(), '|') == count, "hearing all printers");
    product_seconds.push_back((scan - kTimeLimitMs / 1000.0) / count);
    bare_seconds.push_back(Seconds([&] {
                             for (int i = 0; i < count; ++i) {
                               Require(BareFollowUp(), "bare connection");
                             }
                           }) /
                           count);
  }
  std::fprintf(stderr, "scan of %d printers: %.2f ms each, bare %.2f ms\n", count, 1000 * Median(product_seconds),
               1000 * Median(bare_seconds));
  const std::string measure = "scan of " + std::to_string(count) + " printers, each against bare";
  Report(measure.c_str(), Median(product_seconds) / Median(bare_seconds), "<=", 1.2);
}

void MeasureParsing() {
  std::vector<std::string> answers;
  size_t size = 0;
  for (int i = 0; i < kAnswers; ++i) {
    answers.push_back(Answer(i));
    answers.back().pop_back();
    size += answers.back().size();
  }
  const std::string from(size, 'x');
  std::string copy(size, '\0');
  std::vector<double> parsing;
  std::vector<double> copying;
  for (int round = 0; round < kParsingRounds; ++round) {
    ScanList list;
    parsing.push_back(Seconds([&] {
      for (const std::string& answer : answers) {
        list.Add(answer);
      }
    }));
    Require(list.records().size() == kAnswers, "parsing");
    copying.push_back(Seconds([&] { memcpy(copy.data(), from.data(), size); }));
    Require(copy.back() == 'x', "copying");
  }
  std::fprintf(stderr, "parsing 10,000 answers: %.0f ns each; copying them: %.0f ns each; ratio %.1f\n",
               1e9 * Median(parsing) / kAnswers, 1e9 * Median(copying) / kAnswers, Median(parsing) / Median(copying));
}

}  // namespace
}  // namespace vexo::benchmark

int main() {
  WSADATA data = {};
  WSAStartup(MAKEWORD(2, 2), &data);
  for (const int count : {1, 10, 50}) {
    vexo::benchmark::MeasureScan(count);
  }
  vexo::benchmark::MeasureParsing();
  return 0;
}
