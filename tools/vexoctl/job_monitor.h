#ifndef VEXOCTL_JOB_MONITOR_H_
#define VEXOCTL_JOB_MONITOR_H_

#include <cstdint>
#include <memory>
#include <string>

#include "vexo/extend.h"
#include "vexoctl/settings.h"

namespace vexoctl {

// A job monitor object of the library, bound to a printer, and its work. On destruction an open work is closed and the
// object destroyed.
class JobMonitor {
 public:
  // The handle must hold an open port; it is borrowed. Throws a Failure.
  JobMonitor(VexoPrinterHandle* handle, const Settings& settings);
  ~JobMonitor();
  JobMonitor(const JobMonitor&) = delete;
  JobMonitor& operator=(const JobMonitor&) = delete;

  // From now on job events are news (news.h). Throws a Failure.
  void PostEvents();

  // Switches job monitoring on in the printer. Throws a Failure.
  void OpenWork();

  // The same once more, for a printer that was lost. @return the library's result.
  int32_t ReopenWork();

  // Switches job monitoring off, unless it was on before this monitor came: the printer is left to the host that has
  // been listening to it. Throws a Failure.
  void CloseWork();

  // The printer is lost and cannot be told: the work is not closed any more.
  void AbandonWork() { work_open_ = false; }

  // Asks whether job monitoring is on in the printer. Printers of the GS family cannot be asked: the answer is whether
  // this monitor's work is open. @return the library's result.
  int32_t QueryWork(bool* on);

  // For the library's functions.
  CVEXOPrinterReadHelper* get() const { return monitor_.get(); }

 private:
  struct Destroy {
    void operator()(CVEXOPrinterReadHelper* monitor) const { DestroyReprintMonitorObj(monitor); }
  };

  int32_t LeaveWork();

  const std::string printer_name_;
  std::unique_ptr<CVEXOPrinterReadHelper, Destroy> monitor_;
  int64_t callback_ = 0;  // 0: none.
  bool was_on_ = false;   // Monitoring, before this monitor switched it on.
  bool work_open_ = false;
};

}  // namespace vexoctl

#endif  // VEXOCTL_JOB_MONITOR_H_
