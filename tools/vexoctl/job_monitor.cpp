#include "vexoctl/job_monitor.h"

#include <string_view>

#include "vexoctl/failure.h"
#include "vexoctl/news.h"

namespace vexoctl {

JobMonitor::JobMonitor(VexoPrinterHandle* handle, const Settings& settings)
    : printer_name_(settings.PrinterName()), monitor_(GetReprintMonitorObj()) {
  if (monitor_ == nullptr) {
    throw Failure("cannot make a job monitor", GetLastErrorCode());
  }
  const std::string action = "cannot set the job monitor up for " + printer_name_;
  Require(RegisterPrinter(get(), handle), action);
  Require(SelectSDKRepintType(get(), static_cast<uint32_t>(settings.family)), action);
  if (settings.time_limit) {
    Require(SetReadTimeOut(get(), *settings.time_limit), action);
  }
}

JobMonitor::~JobMonitor() {
  LeaveWork();
  if (callback_ != 0) {
    RemoveReprintMonitorFun(get(), callback_);
  }
}

void JobMonitor::PostEvents() {
  Require(AddReprintMonitorFun(get(), PostJobEvent, &callback_), "cannot receive job events of " + printer_name_);
}

void JobMonitor::OpenWork() {
  const std::string action = "cannot switch job monitoring on in " + printer_name_;
  // A printer that does not answer may still take commands.
  const int32_t answered = QueryWork(&was_on_);
  if (answered != VEXO_ERROR_MONITOR_NO_ANSWER) {
    Require(answered, action);
  }
  Require(ReopenWork(), action);
}

int32_t JobMonitor::ReopenWork() {
  const int32_t result = OpenReprintMonitorWork(get());
  work_open_ = result == VEXO_OK;
  return result;
}

void JobMonitor::CloseWork() { Require(LeaveWork(), "cannot switch job monitoring off in " + printer_name_); }

int32_t JobMonitor::LeaveWork() {
  const bool to_be_closed = work_open_ && !was_on_;
  work_open_ = false;
  return to_be_closed ? CloseReprintMonitorWork(get()) : VEXO_OK;
}

int32_t JobMonitor::QueryWork(bool* on) {
  char word[8] = {};  // Zeroed: the library writes the bare word.
  const int32_t result = QueryReprintMonitorWork(get(), word, sizeof word);
  *on = result == VEXO_OK && std::string_view(word) == "on";
  return result;
}

}  // namespace vexoctl
