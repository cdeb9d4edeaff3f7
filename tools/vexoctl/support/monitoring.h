#ifndef VEXOCTL_SUPPORT_MONITORING_H_
#define VEXOCTL_SUPPORT_MONITORING_H_

#include <string>
#include <system_error>

#include "vexo/printer.hpp"
#include "vexoctl/console/options.h"

namespace vexoctl {

// A job monitor whose failures name the printer, and which leaves job monitoring in the printer as it was.
class JobMonitoring {
 public:
  // The printer must be open, and outlive this object. Throws a Failure.
  JobMonitoring(vexo::Printer& printer, const Options& options);

  // Posts job events (events.h) from now on. Throws a Failure.
  void PostEvents();

  // Switches job monitoring on in the printer. Throws a Failure.
  void SwitchOn();

  // The same again, after the connection was lost. Returns whether it succeeded.
  bool SwitchOnAgain();

  // Switches job monitoring off, unless it was on before: it belongs to another host then. Done on destruction, too,
  // but this one throws a Failure.
  void Restore();

  // The connection is lost: monitoring is not switched off any more.
  void Abandon() { monitor_.LeaveOn(); }

  // Whether job monitoring is on in the printer. Throws a Failure.
  bool IsOn();

  vexo::JobMonitor& monitor() { return monitor_; }

 private:
  const std::string printer_name_;
  std::error_code error_;  // Of the operation that was called last.
  vexo::JobMonitor monitor_;
  bool was_on_ = false;  // Monitoring, before this object switched it on.
};

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_MONITORING_H_
