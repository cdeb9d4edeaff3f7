// winsock2.h must come before windows.h.
#include "platform/windows/winsock.h"

#include "discovery/network_scan.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

#include "discovery/scan_answer.h"
#include "discovery/scan_follow_up.h"
#include "platform/clock.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr u_short kReceiptPort = 3289;
constexpr u_short kLabelPort = 6000;
constexpr u_short kAnyPort = 0;

constexpr DWORD kSocketBuffer = 8192;
constexpr DWORD kSocketTimeoutMs = 10;
constexpr size_t kLongestAnswer = 2048;
constexpr size_t kHostNameSize = 1025;
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

sockaddr_in AddressOf(u_long ip, u_short port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = ip;
  address.sin_port = htons(port);
  return address;
}

bool Bind(const platform::ScopedSocket& socket, u_short port) {
  const sockaddr_in address = AddressOf(htonl(INADDR_ANY), port);
  return bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

// A socket that lacks one of them still finds printers, if fewer.
void SetOptions(const platform::ScopedSocket& socket) {
  const auto set = [&socket](int name, DWORD value) {
    setsockopt(socket.get(), SOL_SOCKET, name, reinterpret_cast<const char*>(&value), sizeof(value));
  };
  set(SO_BROADCAST, TRUE);
  set(SO_SNDBUF, kSocketBuffer);
  set(SO_RCVBUF, kSocketBuffer);
  set(SO_RCVTIMEO, kSocketTimeoutMs);
  set(SO_SNDTIMEO, kSocketTimeoutMs);
}

// Some printers answer to the port they listen on, whatever port the question comes from. Most answer to its sender, so
// a scan goes on when somebody else has that port.
void SetUp(platform::ScopedSocket* socket, u_short port) {
  socket->Reset(::socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP));
  if (!Bind(*socket, port)) {
    Bind(*socket, kAnyPort);
  }
  SetOptions(*socket);
}

// For a target that is no address inet_addr gives the broadcast address of the local network.
void Send(const platform::ScopedSocket& socket, std::string_view question, const char* target, u_short port) {
  const sockaddr_in address = AddressOf(inet_addr(target), port);
  while (!question.empty()) {
    const int sent = sendto(socket.get(), question.data(), static_cast<int>(question.size()), 0,
                            reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    if (sent <= 0) {
      return;
    }
    question.remove_prefix(static_cast<size_t>(sent));
  }
}

bool AwaitAnswer(const platform::ScopedSocket& socket, int64_t limit_ms) {
  constexpr int64_t kLongestMs = std::numeric_limits<int32_t>::max();
  const auto milliseconds = static_cast<int32_t>(std::min(limit_ms, kLongestMs));
  timeval limit = {milliseconds / 1000, milliseconds % 1000 * 1000};
  fd_set readable = {};
  readable.fd_count = 1;
  readable.fd_array[0] = socket.get();
  return select(0, &readable, nullptr, nullptr, &limit) > 0;
}

constexpr int kNoneYet = -2;

// The length of the next answer of at most kLongestAnswer bytes, kNoneYet, or SOCKET_ERROR.
int ReceiveNow(const platform::ScopedSocket& socket, char* buffer) {
  const int received = recvfrom(socket.get(), buffer, kLongestAnswer, 0, nullptr, nullptr);
  return received == SOCKET_ERROR && WSAGetLastError() == WSAEWOULDBLOCK ? kNoneYet : received;
}

// Calls `take` with each answer. The buffer is not cleared in between: printers that leave the zero off the end of
// their answers have always been read so, and hosts know their records that way.
//
// The socket's buffer is small, and every printer of a network answers at once. So answers are taken one after the
// other for as long as there are any; only then is the next one waited for. One that ended the waiting is taken even if
// this thread gets to run only after the limit: it came in time.
template <typename Take>
void Receive(const platform::ScopedSocket& socket, int64_t time_limit_ms, Take take) {
  u_long without_waiting = TRUE;
  ioctlsocket(socket.get(), FIONBIO, &without_waiting);
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

// Empty when the system does not tell.
std::string OwnAddress() {
  char name[kHostNameSize] = {};
  if (gethostname(name, sizeof(name)) != 0) {
    return {};
  }
  const hostent* const host = gethostbyname(name);
  if (host == nullptr || host->h_addr_list[0] == nullptr) {
    return {};
  }
  in_addr address = {};
  std::memcpy(&address, host->h_addr_list[0], sizeof(address));
  return inet_ntoa(address);
}

std::string ReceiptQuestion() { return "getval \"" + std::string(kScanKey) + '"'; }

std::string LabelQuestion() {
  const Bytes command = BuildGetValCommand(kScanKey);
  const std::string text(command.begin(), command.end());
  char question[kLabelQuestionSize];
  (void)std::snprintf(question, sizeof(question), "%s\"%s\"\r\n", text.c_str(), OwnAddress().c_str());
  return question;
}

// Answers are judged as they come: of a network that talks a lot only the printers take memory.
void CollectAnswers(ScannedPrinters printers, int64_t time_limit_ms, const char* target, ScanList* list) {
  const bool label = printers == ScannedPrinters::kLabel;
  const u_short port = label ? kLabelPort : kReceiptPort;
  platform::ScopedSocket socket;
  SetUp(&socket, port);
  Send(socket, label ? LabelQuestion() : ReceiptQuestion(), target, port);
  Receive(socket, time_limit_ms, [=](std::string_view answer) {
    const bool own_question = label && answer.find(kScanKey) != std::string_view::npos;
    if (!own_question) {
      list->Add(answer);
    }
  });
  socket.ShutDown(SD_BOTH);
}

}  // namespace

int32_t ScanNetwork(ScannedPrinters printers, int64_t time_limit_ms, const char* target, std::string* text) {
  platform::WinsockUse winsock;
  winsock.Start();  // Without it no socket works, and nobody is found.
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
