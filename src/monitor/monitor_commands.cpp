#include "monitor/monitor_commands.h"

#include <algorithm>
#include <string>

#include "protocol/hex_text.h"
#include "protocol/v1_command.h"

namespace vexo {
namespace {

constexpr char kGsParenH[] = "1D 28 48";
constexpr size_t kTaskDigits = 4;

// `body` begins with its length (16 bits, low byte first).
Bytes BuildGsParenHCommand(const Bytes& body) {
  Bytes command = HexTextToBytes(kGsParenH);
  Append(&command, body);
  return command;
}

// Decimal, zero-padded to four digits.
std::string TaskNumberText(int32_t task_id) {
  const std::string digits = std::to_string(task_id);
  return std::string(kTaskDigits - std::min(digits.size(), kTaskDigits), '0') + digits;
}

}  // namespace

Bytes MonitoringCommand(ProtocolFamily family, bool on) {
  if (family == ProtocolFamily::kV1) {
    return BuildSetValCommand("job_monitor", on ? "on" : "off");
  }
  const uint8_t mode = on ? 0x32 : 0x30;
  return BuildGsParenHCommand({0x03, 0x00, 0x31, 0x30, mode});
}

Bytes TagCommand(ProtocolFamily family, int32_t task_id) {
  const std::string number = TaskNumberText(task_id);
  if (family == ProtocolFamily::kV1) {
    return BuildSetValCommand("process_id", number);
  }
  Bytes body = {0x06, 0x00, 0x30, 0x30};
  Append(&body, number);
  return BuildGsParenHCommand(body);
}

Bytes ClearTasksCommand(ProtocolFamily family) {
  if (family == ProtocolFamily::kV1) {
    return {0x1B, 0x1C, 0x26, 0x63, 0x6C};
  }
  return {0x10, 0x14, 0x08, 0x01, 0x03, 0x14, 0x01, 0x06, 0x02, 0x08};
}

// Compatibility: the length field says three even when a fourth byte follows to request an answer; printers expect
// exactly these bytes.
Bytes ResetNumbersCommand(bool await_answer) {
  Bytes body = {0x03, 0x00, 0x32, 0x30, 0x30};
  if (await_answer) {
    body.push_back(0x0A);
  }
  return BuildGsParenHCommand(body);
}

}  // namespace vexo
