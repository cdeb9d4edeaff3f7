#ifndef VEXOCTL_PRINT_JOB_H_
#define VEXOCTL_PRINT_JOB_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vexoctl/job_file.h"
#include "vexoctl/job_monitor.h"
#include "vexoctl/news.h"
#include "vexoctl/settings.h"

namespace vexoctl {

// A job on its way through a printer, known to it by a task number.
class PrintJob {
 public:
  // Switches job monitoring on and announces the job. The handle holds a watched port (watched_port.h), which outlives
  // the job. Throws a Failure.
  PrintJob(VexoPrinterHandle* handle, uint32_t task, const Settings& settings);

  // Sends `first`, which was read from the file already, and the rest of the file. Throws a Failure unless the printer
  // took everything.
  // @return how many bytes that were.
  uint64_t Send(std::vector<uint8_t> first, JobFile& file);

  // Waits until the printer reports the end of the job. Throws a Failure when that does not come within the limit.
  // @return the value that the printer sends with the end.
  uint32_t AwaitEnd(uint32_t limit_ms);

  // Leaves job monitoring as it was. Throws a Failure.
  void Finish() { monitor_.CloseWork(); }

 private:
  void SendPiece(const std::vector<uint8_t>& piece, const std::string& file_name);
  void React(const News& news);

  VexoPrinterHandle* const handle_;
  const int32_t task_;
  const std::string printer_name_;
  const std::string task_name_;  // "task 7".
  JobMonitor monitor_;
  uint64_t sent_ = 0;
  std::optional<uint32_t> end_value_;
};

}  // namespace vexoctl

#endif  // VEXOCTL_PRINT_JOB_H_
