#include "discovery/network_scan.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string_view>

#include "discovery/scan_answer.h"
#include "discovery/scan_follow_up.h"
#include "platform/clock.h"
#include "platform/sockets.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr uint16_t kReceiptPort = 3289;
constexpr uint16_t kLabelPort = 6000;
constexpr uint16_t kAnyPort = 0;

constexpr uint32_t kSocketBuffer = 8192;
constexpr uint32_t kSocketTimeoutMs = 10;
constexpr size_t kLongestAnswer = 2048;
constexpr size_t kLabelQuestionSize = 64;

// The time left of a limit, in milliseconds. Measured from the start instead of summed up per turn, so that turns
// shorter than a clock step count, too.
class Countdown {
 public:
  explicit Countdown(int64_t limit_ms) : limit_ms_(limit_ms) {}

  int64_t LeftMs() const {
    constexpr int64_t kMsPerSecond = 1000;
    const int64_t elapsed = platform::PerformanceCounter() - started_;
    return std::max<int64_t>(limit_ms_, 0) - elapsed * kMsPerSecond / platform::PerformanceFrequency();
  }

 private:
  const int64_t limit_ms_;
  const int64_t started_ = platform::PerformanceCounter();
};

// Failures are ignored: a socket without one of these options still finds printers, if fewer.
void SetOptions(platform::Socket socket) {
  platform::SetBroadcast(socket);
  platform::SetSendBuffer(socket, kSocketBuffer);
  platform::SetReceiveBuffer(socket, kSocketBuffer);
  platform::SetReceiveTimeout(socket, kSocketTimeoutMs);
  platform::SetSendTimeout(socket, kSocketTimeoutMs);
}

// Some printers answer to the port they listen on, whatever port the request came from. Most answer to its sender, so
// the scan continues on another port when that one is taken.
void SetUp(platform::ScopedSocket* socket, uint16_t port) {
  socket->Reset(platform::MakeDatagramSocket());
  if (!platform::Bind(socket->get(), platform::AnyIpv4Address(port))) {
    platform::Bind(socket->get(), platform::AnyIpv4Address(kAnyPort));
  }
  SetOptions(socket->get());
}

void Send(platform::Socket socket, std::string_view question, const char* target, uint16_t port) {
  const platform::SocketAddress address = platform::Ipv4Address(target, port);
  while (!question.empty()) {
    const int sent = platform::SendTo(socket, question.data(), question.size(), address);
    if (sent <= 0) {
      return;
    }
    question.remove_prefix(static_cast<size_t>(sent));
  }
}

bool AwaitAnswer(platform::Socket socket, int64_t limit_ms) {
  constexpr int64_t kLongestMs = std::numeric_limits<int32_t>::max();
  platform::SocketEvents readable = {true, false, false};
  return platform::AwaitSocket(socket, &readable, std::min(limit_ms, kLongestMs)) > 0;
}

constexpr int kNoAnswerYet = -2;

// Returns the length of the next answer, at most kLongestAnswer bytes, kNoAnswerYet, or kSocketFailure.
int ReceiveNow(platform::Socket socket, char* buffer) {
  const int received = platform::Receive(socket, reinterpret_cast<uint8_t*>(buffer), kLongestAnswer);
  const bool no_answer_yet =
      received == platform::kSocketFailure && platform::LastSocketError() == platform::kSocketWouldBlock;
  return no_answer_yet ? kNoAnswerYet : received;
}

// Calls `take` with each answer.
//
// Compatibility: the buffer is not cleared between answers. A printer that omits the terminating zero gets the tail of
// a longer answer appended to its record, and hosts know its records in that form.
//
// The socket's buffer is small and all printers of a network answer at once, so answers are taken as long as there are
// any before waiting for the next. An answer that ended the wait is taken even if this thread runs only after the
// limit: it arrived in time.
template <typename Take>
void Receive(platform::Socket socket, int64_t time_limit_ms, Take take) {
  platform::SetBlocking(socket, false);
  char buffer[kLongestAnswer + 1] = {};
  const Countdown countdown(time_limit_ms);
  for (int64_t left = countdown.LeftMs(); left >= 1; left = countdown.LeftMs()) {
    int received = ReceiveNow(socket, buffer);
    if (received == kNoAnswerYet) {
      if (!AwaitAnswer(socket, left)) {
        return;
      }
      received = ReceiveNow(socket, buffer);
    }
    if (received > 0) {
      take(std::string_view(buffer));
    } else if (received != kNoAnswerYet) {
      return;  // Compatibility: an empty datagram, one that is too long and a network error end the scan.
    }
  }
}

std::string ReceiptQuestion() { return "getval \"" + std::string(kScanKey) + '"'; }

std::string LabelQuestion() {
  const Bytes command = BuildGetValCommand(kScanKey);
  const std::string text(command.begin(), command.end());
  char question[kLabelQuestionSize];
  (void)std::snprintf(question, sizeof(question), "%s\"%s\"\r\n", text.c_str(), platform::OwnIpv4Address().c_str());
  return question;
}

// Filters answers as they arrive, so that on a busy network only printers use memory.
void CollectAnswers(ScannedPrinters printers, int64_t time_limit_ms, const char* target, ScanList* list) {
  const bool label = printers == ScannedPrinters::kLabel;
  const uint16_t port = label ? kLabelPort : kReceiptPort;
  platform::ScopedSocket socket;
  SetUp(&socket, port);
  Send(socket.get(), label ? LabelQuestion() : ReceiptQuestion(), target, port);
  Receive(socket.get(), time_limit_ms, [=](std::string_view answer) {
    // Compatibility: any label answer that contains the key is taken for the request, which a broadcast returns to us.
    const bool own_question = label && answer.find(kScanKey) != std::string_view::npos;
    if (!own_question) {
      list->Add(answer);
    }
  });
  socket.ShutDown(platform::Direction::kBoth);
}

}  // namespace

int32_t ScanNetwork(ScannedPrinters printers, int64_t time_limit_ms, const char* target, std::string* text) {
  platform::SocketLibrary sockets;
  sockets.Start();  // If this fails, no socket works and the scan finds no printer.
  ScanList list;
  CollectAnswers(printers, time_limit_ms, target, &list);
  if (list.empty()) {
    return VEXO_ERROR_NO_PRINTER;
  }
  AskScannedPrinters(&list);
  *text = list.Text();
  return VEXO_OK;
}

}  // namespace vexo
