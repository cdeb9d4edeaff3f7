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

// The milliseconds that are left of a limit. Taken from its beginning: however short the turns are, none is for free.
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

// A socket that lacks one of them still finds printers, if fewer.
void SetOptions(platform::Socket socket) {
  platform::SetBroadcast(socket);
  platform::SetSendBuffer(socket, kSocketBuffer);
  platform::SetReceiveBuffer(socket, kSocketBuffer);
  platform::SetReceiveTimeout(socket, kSocketTimeoutMs);
  platform::SetSendTimeout(socket, kSocketTimeoutMs);
}

// Some printers answer to the port they listen on, whatever port the question comes from. Most answer to its sender, so
// a scan goes on when somebody else has that port.
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

constexpr int kNoneYet = -2;

// The length of the next answer of at most kLongestAnswer bytes, kNoneYet, or kSocketFailure.
int ReceiveNow(platform::Socket socket, char* buffer) {
  const int received = platform::Receive(socket, reinterpret_cast<uint8_t*>(buffer), kLongestAnswer);
  const bool none_yet =
      received == platform::kSocketFailure && platform::LastSocketError() == platform::kSocketWouldBlock;
  return none_yet ? kNoneYet : received;
}

// Calls `take` with each answer. The buffer is not cleared in between: printers that leave the zero off the end of
// their answers have always been read so, and hosts know their records that way.
//
// The socket's buffer is small, and every printer of a network answers at once. So answers are taken one after the
// other for as long as there are any; only then is the next one waited for. One that ended the waiting is taken even if
// this thread gets to run only after the limit: it came in time.
template <typename Take>
void Receive(platform::Socket socket, int64_t time_limit_ms, Take take) {
  platform::SetBlocking(socket, false);
  char buffer[kLongestAnswer + 1] = {};
  const Countdown countdown(time_limit_ms);
  for (int64_t left = countdown.LeftMs(); left >= 1; left = countdown.LeftMs()) {
    int received = ReceiveNow(socket, buffer);
    if (received == kNoneYet) {
      if (!AwaitAnswer(socket, left)) {
        return;
      }
      received = ReceiveNow(socket, buffer);
    }
    if (received > 0) {
      take(std::string_view(buffer));
    } else if (received != kNoneYet) {
      return;
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

// Answers are judged as they come: of a network that talks a lot only the printers take memory.
void CollectAnswers(ScannedPrinters printers, int64_t time_limit_ms, const char* target, ScanList* list) {
  const bool label = printers == ScannedPrinters::kLabel;
  const uint16_t port = label ? kLabelPort : kReceiptPort;
  platform::ScopedSocket socket;
  SetUp(&socket, port);
  Send(socket.get(), label ? LabelQuestion() : ReceiptQuestion(), target, port);
  Receive(socket.get(), time_limit_ms, [=](std::string_view answer) {
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
  sockets.Start();  // Without it no socket works, and nobody is found.
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
