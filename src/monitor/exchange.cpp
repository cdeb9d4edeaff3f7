#include "monitor/exchange.h"

#include <algorithm>
#include <mutex>

#include "platform/clock.h"
#include "protocol/hex_text.h"
#include "protocol/v1_command.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr char kGsParenH[] = "1D 28 48";
constexpr int kAnswerAttempts = 2;
constexpr size_t kTaskDigits = 4;

}  // namespace

Bytes BuildGsParenHCommand(const Bytes& body) {
  Bytes command = HexTextToBytes(kGsParenH);
  Append(&command, body);
  return command;
}

std::string TaskNumberText(int32_t task_id) {
  const std::string digits = std::to_string(task_id);
  return std::string(kTaskDigits - std::min(digits.size(), kTaskDigits), '0') + digits;
}

int32_t SendSetVal(CVEXOPrinterReadHelper* monitor, std::string_view key, std::string_view value) {
  return monitor->Send(BuildSetValCommand(key, value));
}

int32_t SendGsParenH(CVEXOPrinterReadHelper* monitor, const Bytes& body, uint32_t delay_ms) {
  if (delay_ms != 0) {
    platform::SleepMs(delay_ms);
  }
  return monitor->Send(BuildGsParenHCommand(body));
}

int32_t SendForAnswer(CVEXOPrinterReadHelper* monitor, const Bytes& command) {
  const std::lock_guard<platform::RecursiveMutex> guard(monitor->io_lock());
  monitor->Poll(0);
  monitor->queue().Purge();
  return monitor->Send(command);
}

int32_t AwaitAnswer(CVEXOPrinterReadHelper* monitor, const Bytes& command) {
  const std::lock_guard<platform::RecursiveMutex> guard(monitor->io_lock());
  const int32_t sent = SendForAnswer(monitor, command);
  if (sent != VEXO_OK) {
    return sent;
  }
  monitor->Poll(monitor->read_timeout());
  for (int attempt = 0; attempt < kAnswerAttempts; ++attempt) {
    if (monitor->queue().TakeAnswer().kind != RecordKind::kEmpty) {
      return VEXO_OK;
    }
    monitor->Poll(monitor->read_timeout());
  }
  return VEXO_ERROR_MONITOR_NO_ANSWER;
}

}  // namespace vexo
