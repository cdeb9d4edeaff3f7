#ifndef VIRTUAL_PRINTER_MODEL_REPORT_FRAMES_H_
#define VIRTUAL_PRINTER_MODEL_REPORT_FRAMES_H_

#include <cstdint>

#include "virtual_printer/model/task_number.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// A printer reports in the manner in which its host has switched monitoring on.
enum class ReportFamily {
  kV1,   // Frames: the V1 report line, type, payload length, payload; all numbers low byte first.
  kGsH,  // Short replies that begin with 0x37.
};

// `V1 reports` or `37 replies`.
const char* FamilyText(ReportFamily family);

Message JobStarted(ReportFamily family, TaskNumber task);

// A GS ( H reply has room for neither number: its host knows the task that it was told last, and asks for the status.
Message JobEnded(ReportFamily family, TaskNumber task, std::uint32_t status);

// Some other state of a job. Only reports can tell it; hosts of either family understand them.
Message JobState(TaskNumber task);

Message TasksCleared(ReportFamily family);
Message NumberingReset(ReportFamily family);

// Answers to questions, reports for hosts of either family.
Message MonitoringState(bool on);
Message StatusAnswer(std::uint32_t status);

// What a host hears that only listens for the end of its jobs: a framed V2 answer with a percent-encoded value.
Message TaskOver(TaskNumber task);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_REPORT_FRAMES_H_
