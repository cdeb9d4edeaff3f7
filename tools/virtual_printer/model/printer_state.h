#ifndef VIRTUAL_PRINTER_MODEL_PRINTER_STATE_H_
#define VIRTUAL_PRINTER_MODEL_PRINTER_STATE_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

#include "virtual_printer/downloads/download_control.h"
#include "virtual_printer/model/network_identity.h"
#include "virtual_printer/model/print_jobs.h"
#include "virtual_printer/model/report_frames.h"

namespace virtual_printer {

constexpr std::uint16_t kDefaultPrintWidth = 576;

// The settings that hosts access by key number.
struct ParameterZone {
  std::uint16_t print_width = kDefaultPrintWidth;  // In dots.
};

// The printer when it is switched on.
struct PrinterSetup {
  ParameterZone zone;
  std::uint32_t status = 0;
  JobTimes job_times;
  std::optional<ReportFamily> forced_family;  // Used for all reports, whatever the host has chosen.
  std::optional<ReportFamily> monitoring;     // Is already on, for the first host that connects.
  bool task_over = false;                     // The host that sent a job also gets a V2 answer at its end.
  DownloadSetup downloads;
  NetworkIdentity identity;
};

// Monitoring that was on when its connection ended. A host whose connection broke reconnects and expects its reports to
// continue without asking again, so the next connections inherit it.
class InheritedMonitoring {
 public:
  explicit InheritedMonitoring(std::optional<ReportFamily> at_start) {
    if (at_start) {
      Leave(*at_start);
    }
  }

  bool IsEmpty() const { return left_.empty(); }

  void Leave(ReportFamily family) {
    left_.push_back(family);
    if (left_.size() > kMaxLeft) {
      left_.pop_front();
    }
  }

  // Removes and returns the oldest one; nothing if there is none.
  std::optional<ReportFamily> Inherit() {
    if (left_.empty()) {
      return std::nullopt;
    }
    const ReportFamily family = left_.front();
    left_.pop_front();
    return family;
  }

 private:
  // Hosts that never reconnect must not exhaust the memory.
  static constexpr std::size_t kMaxLeft = 16;

  std::deque<ReportFamily> left_;
};

// Shared by all connections.
struct PrinterState {
  explicit PrinterState(const PrinterSetup& printer_setup)
      : setup(printer_setup),
        current(setup.zone),
        saved(setup.zone),
        status(setup.status),
        jobs(setup.job_times),
        inherited_monitoring(setup.monitoring),
        downloads(setup.downloads) {}

  // Whether print data makes jobs.
  bool TracksJobs() const { return monitoring_hosts > 0 || !inherited_monitoring.IsEmpty() || setup.task_over; }

  const PrinterSetup setup;
  ParameterZone current;
  ParameterZone saved;                 // Restored by a restart.
  std::uint64_t print_data_bytes = 0;  // Received so far.
  std::uint32_t status;                // As hosts ask for it, and as it is reported at the end of a job.
  PrintJobs jobs;
  int monitoring_hosts = 0;  // Number of connections that get reports.
  InheritedMonitoring inherited_monitoring;
  DownloadState downloads;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_PRINTER_STATE_H_
