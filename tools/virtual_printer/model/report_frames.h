#ifndef VIRTUAL_PRINTER_MODEL_REPORT_FRAMES_H_
#define VIRTUAL_PRINTER_MODEL_REPORT_FRAMES_H_

#include <cstdint>

#include "virtual_printer/model/print_jobs.h"
#include "virtual_printer/wire/message.h"

namespace virtual_printer {

// The two forms of reports. A host chooses one by the command with which it switches monitoring on.
enum class ReportFamily {
  kV1,   // The V1 report line, type, payload length, payload.
  kGsH,  // Short replies that begin with 0x37.
};

// `V1 reports` or `37 replies`.
const char* FamilyText(ReportFamily family);

Message JobStarted(ReportFamily family, TaskNumber task);

// A 37 reply carries neither number nor status: its host remembers the task that started and asks for the status.
Message JobEnded(ReportFamily family, TaskNumber task, std::uint32_t status);

// Another state of a job. There is only a V1 report for it, which hosts of both families understand.
Message JobState(TaskNumber task);

Message TasksCleared(ReportFamily family);
Message NumberingReset(ReportFamily family);

// Answers to questions; V1 reports for hosts of both families.
Message MonitoringState(bool on);
Message StatusAnswer(std::uint32_t status);

// A framed V2 answer, for hosts that wait for the end of a job without monitoring.
Message TaskOver(TaskNumber task);

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_REPORT_FRAMES_H_
