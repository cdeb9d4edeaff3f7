#include "virtual_printer/model/report_frames.h"

#include <cstddef>
#include <string>
#include <string_view>

#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {
namespace {

constexpr std::string_view kReportHeader = "\x1B\x1C& V1 report";

enum ReportType : std::uint16_t {
  kReportStarted = 256,
  kReportEnded = 257,
  kReportState = 258,
  kReportDone = 259,
  kReportStatus = 260,
};

enum ReplyType : std::uint8_t {
  kReplyStarted = 0x22,
  kReplyEnded = 0x23,
  kReplyNumberingReset = 0x24,
  kReplyTasksCleared = 0x25,
};
constexpr std::uint8_t kReplyMark = 0x37;

constexpr std::string_view kV2Header = "\x1B\x1C& V2";
constexpr std::size_t kV2FixedLength = 12;
constexpr std::size_t kV2LengthOffset = 3;  // Of the payload length in the fixed part.
constexpr std::string_view kTaskOverLine = "getval \"task_over\"\r\n";
constexpr std::string_view kV2Status("\0\1\0\0", 4);  // The second byte means success.

std::string Number(std::uint32_t number, int size) {
  std::string bytes;
  AppendNumber(number, size, bytes);
  return bytes;
}

std::string Number16(std::size_t number) { return Number(static_cast<std::uint32_t>(number), 2); }

Message MakeMessage(const std::string& wire, const std::string& text) { return {{wire.begin(), wire.end()}, text}; }

// The first byte of the payload has no meaning.
Message Report(ReportType type, const std::string& content, const std::string& text) {
  const std::string payload = '\0' + content;
  return MakeMessage(std::string(kReportHeader) + Number16(type) + Number16(payload.size()) + payload,
                     "report " + std::to_string(type) + ": " + text);
}

Message Reply(ReplyType type, const std::string& content, const std::string& text) {
  return MakeMessage(Number(kReplyMark, 1) + Number(type, 1) + content + '\0',
                     "reply 37 " + HexText(type, 2) + ": " + text);
}

std::string StatusText(std::uint32_t status) { return "status 0x" + HexText(status, 8); }

std::string PercentEncoded(std::string_view text) {
  std::string encoded;
  for (const char character : text) {
    if (character == '=' || character == ';') {
      encoded += '%' + HexText(static_cast<unsigned char>(character), 2);
    } else {
      encoded += character;
    }
  }
  return encoded;
}

}  // namespace

const char* FamilyText(ReportFamily family) { return family == ReportFamily::kV1 ? "V1 reports" : "37 replies"; }

Message JobStarted(ReportFamily family, TaskNumber task) {
  const std::string text = "task " + TaskText(task) + " started";
  return family == ReportFamily::kV1 ? Report(kReportStarted, TaskText(task), text)
                                     : Reply(kReplyStarted, TaskText(task), text);
}

Message JobEnded(ReportFamily family, TaskNumber task, std::uint32_t status) {
  const std::string text = "task " + TaskText(task) + " ended";
  if (family == ReportFamily::kGsH) {
    return Reply(kReplyEnded, {}, text);
  }
  return Report(kReportEnded, TaskText(task) + Number(status, 4), text + ", " + StatusText(status));
}

Message JobState(TaskNumber task) { return Report(kReportState, TaskText(task), "state of task " + TaskText(task)); }

Message TasksCleared(ReportFamily family) {
  const std::string text = "tasks cleared";
  return family == ReportFamily::kV1 ? Report(kReportDone, Number(1, 1), text) : Reply(kReplyTasksCleared, {}, text);
}

Message NumberingReset(ReportFamily family) {
  const std::string text = "task numbering reset";
  return family == ReportFamily::kV1 ? Report(kReportDone, Number(1, 1), text) : Reply(kReplyNumberingReset, {}, text);
}

Message MonitoringState(bool on) {
  return Report(kReportDone, Number(on ? 1 : 0, 1), on ? "monitoring is on" : "monitoring is off");
}

Message StatusAnswer(std::uint32_t status) { return Report(kReportStatus, Number(status, 4), StatusText(status)); }

Message TaskOver(TaskNumber task) {
  const std::string value = "task=" + TaskText(task) + ";state=ok";
  const std::string payload = std::string(kTaskOverLine) + std::string(kV2Status) + PercentEncoded(value);
  std::string fixed_part(kV2FixedLength, '\0');
  fixed_part.replace(kV2LengthOffset, 2, Number16(payload.size()));
  return MakeMessage(std::string(kV2Header) + fixed_part + payload, "V2 answer: " + value);
}

}  // namespace virtual_printer
