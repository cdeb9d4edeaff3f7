#ifndef VIRTUAL_PRINTER_MODEL_PRINTER_STATE_H_
#define VIRTUAL_PRINTER_MODEL_PRINTER_STATE_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "virtual_printer/downloads/download.h"
#include "virtual_printer/downloads/download_faults.h"
#include "virtual_printer/downloads/firmware_receiver.h"
#include "virtual_printer/model/left_monitoring.h"
#include "virtual_printer/model/network_identity.h"
#include "virtual_printer/model/print_jobs.h"
#include "virtual_printer/model/report_frames.h"

namespace virtual_printer {

constexpr std::uint16_t kDefaultPrintWidth = 576;

// The settings that a host reaches by key number.
struct ParameterZone {
  std::uint16_t print_width = kDefaultPrintWidth;  // In dots.
};

// What hosts find when they download something.
struct DownloadSetup {
  PrinterMode mode = PrinterMode::kOrdinary;    // At the start.
  std::chrono::milliseconds loader_delay{300};  // From the ordinary printer to its loader.
  std::chrono::milliseconds restart_time{300};  // Back to the ordinary printer.
  std::vector<DownloadFault> faults;
};

// How a printer is when it is switched on.
struct PrinterSetup {
  ParameterZone zone;
  std::uint32_t status = 0;
  JobTimes job_times;
  std::optional<ReportFamily> family;      // Reports so, whatever the host has asked for.
  std::optional<ReportFamily> monitoring;  // Is on already, for the first host to come.
  bool task_over = false;                  // The host that sent a job hears of its end by a V2 answer, too.
  DownloadSetup downloads;
  NetworkIdentity identity;
};

struct DownloadState {
  PrinterMode mode;
  DownloadFaults faults;
  FirmwareImage firmware;
};

// What a printer has only once, however many hosts are connected.
struct PrinterState {
  explicit PrinterState(const PrinterSetup& printer_setup)
      : setup(printer_setup),
        current(setup.zone),
        saved(setup.zone),
        status(setup.status),
        jobs(setup.job_times),
        left_monitoring(setup.monitoring),
        downloads{setup.downloads.mode, DownloadFaults(setup.downloads.faults), {}} {}

  // Whether print data makes jobs.
  bool WatchesJobs() const { return monitoring_hosts > 0 || !left_monitoring.IsEmpty() || setup.task_over; }

  const PrinterSetup setup;
  ParameterZone current;               // In force.
  ParameterZone saved;                 // Survives switching off.
  std::uint64_t print_data_bytes = 0;  // Received so far.
  std::uint32_t status;                // As hosts read it, and as it is reported with the end of a job.
  PrintJobs jobs;
  int monitoring_hosts = 0;  // Connections that are sent reports.
  LeftMonitoring left_monitoring;
  DownloadState downloads;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_PRINTER_STATE_H_
