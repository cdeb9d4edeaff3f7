#include "vexoctl/support/monitoring.h"

#include "vexoctl/console/failure.h"
#include "vexoctl/support/events.h"

namespace vexoctl {

JobMonitoring::JobMonitoring(vexo::Printer& printer, const Options& options)
    : printer_name_(options.PrinterName()), monitor_(printer, options.family, &error_) {
  if (!error_ && options.time_limit) {
    monitor_.SetReadTimeout(*options.time_limit, &error_);
  }
  Require(error_, "cannot set up a job monitor for " + printer_name_);
}

void JobMonitoring::PostEvents() {
  monitor_.SetListener(PostJobEvent, &error_);
  Require(error_, "cannot receive job events of " + printer_name_);
}

void JobMonitoring::SwitchOn() {
  const std::string action = "cannot switch job monitoring on in " + printer_name_;
  was_on_ = monitor_.IsOn(&error_);
  if (error_.value() != VEXO_ERROR_MONITOR_NO_ANSWER) {  // A printer that does not answer may still take commands.
    Require(error_, action);
  }
  if (!SwitchOnAgain()) {
    throw Failure(action, error_.value());
  }
}

bool JobMonitoring::SwitchOnAgain() {
  monitor_.Start(&error_);
  if (was_on_) {
    monitor_.LeaveOn();
  }
  return !error_;
}

void JobMonitoring::Restore() {
  if (!was_on_) {
    monitor_.Stop(&error_);
    monitor_.LeaveOn();  // After a failure, it is not tried again.
    Require(error_, "cannot switch job monitoring off in " + printer_name_);
  }
}

bool JobMonitoring::IsOn() {
  const bool on = monitor_.IsOn(&error_);
  Require(error_, "cannot read the job monitoring of " + printer_name_);
  return on;
}

}  // namespace vexoctl
