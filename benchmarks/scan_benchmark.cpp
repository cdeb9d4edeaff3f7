// Time of a network scan beyond its time limit, compared with one query over a plain socket, and the time for parsing
// answers, compared with copying them. scanned_printers.py simulates the printers.

// winsock2.h must come before windows.h.
#include <winsock2.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "discovery/scan_answer.h"
#include "measure.h"
#include "platform/clock.h"
#include "vexo/extend.h"

namespace vexo::benchmark {
namespace {

constexpr u_short kTcpPort = 9100;
constexpr char kQuestion[] =
    "\x12"
    "CER";
constexpr int kQuestionLength = 4;
constexpr int kReplyLength = 16;
constexpr uint32_t kPauseMs = 20;  // Sleep between checks for the reply.
constexpr int64_t kTimeLimitMs = 300;
constexpr int kRounds = 9;

constexpr int kAnswers = 10'000;
constexpr int kParsingRounds = 101;

std::string Answer(int printer) {
  std::string answer = "127.11.1.1\r\nready\r\nKM451\r\n1.0." + std::to_string(printer);
  for (int line = 4; line < 16; ++line) {
    answer += "\r\nfield " + std::to_string(line);
  }
  return answer;
}

bool BareFollowUp() {
  const SOCKET bare = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = inet_addr("127.11.1.1");
  address.sin_port = htons(kTcpPort);
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

// Time beyond the limit of a scan that finds `count` printers.
double SecondsBeyondTheLimit(int count) {
  const std::string network = "127.11." + std::to_string(count) + ".1";
  std::vector<char> list(static_cast<size_t>(count) * 256 + 1);
  std::vector<double> beyond;
  for (int round = 0; round < kRounds; ++round) {
    const double scan = Seconds([&] {
      Require(ScanPos(kTimeLimitMs, list.data(), static_cast<int32_t>(list.size()) - 1, network.c_str()) == VEXO_OK,
              "scan");
    });
    Require(std::count(list.begin(), list.end(), '|') == count, "finding all printers");
    beyond.push_back(scan - kTimeLimitMs / 1000.0);
  }
  return Median(beyond);
}

double SecondsOfABareFollowUp() {
  std::vector<double> bare;
  for (int round = 0; round < kRounds; ++round) {
    bare.push_back(Seconds([&] { Require(BareFollowUp(), "bare connection"); }));
  }
  return Median(bare);
}

void MeasureScans() {
  const double bare = SecondsOfABareFollowUp();
  const double single = SecondsBeyondTheLimit(1);
  const double ten = SecondsBeyondTheLimit(10);
  const double fifty = SecondsBeyondTheLimit(50);
  std::fprintf(stderr, "beyond the limit of a scan: bare %.1f ms, 1 printer %.1f ms, 10 %.1f ms, 50 %.1f ms\n",
               1000 * bare, 1000 * single, 1000 * ten, 1000 * fifty);
  Report("scan of 1 printer against a bare follow-up", single / bare, "<=", 1.2);
  Report("scan of 10 printers against one", ten / single, "<=", 2);
  Report("scan of 50 printers against one", fifty / single, "<=", 5);
}

void MeasureParsing() {
  std::vector<std::string> answers;
  size_t size = 0;
  for (int i = 0; i < kAnswers; ++i) {
    answers.push_back(Answer(i));
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
  vexo::benchmark::MeasureScans();
  vexo::benchmark::MeasureParsing();
  return 0;
}
