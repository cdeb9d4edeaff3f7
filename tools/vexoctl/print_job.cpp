#include "vexoctl/print_job.h"

#include <windows.h>

#include <algorithm>
#include <chrono>

#include "vexoctl/failure.h"
#include "vexoctl/progress.h"

namespace vexoctl {

PrintJob::PrintJob(VexoPrinterHandle* handle, uint32_t task, const Settings& settings)
    : handle_(handle),
      task_(static_cast<int32_t>(task)),
      printer_name_(settings.PrinterName()),
      task_name_("task " + std::to_string(task)),
      monitor_(handle, settings) {
  monitor_.PostEvents();
  monitor_.OpenWork();
  Require(SetPrintTaskId(monitor_.get(), task_), "cannot announce " + task_name_ + " to " + printer_name_);
}

uint64_t PrintJob::Send(std::vector<uint8_t> first, JobFile& file) {
  Progress progress(file.size());
  for (std::vector<uint8_t> piece = std::move(first); !piece.empty(); piece = file.Read()) {
    while (const std::optional<News> news = AllNews().Take()) {
      React(*news);
    }
    SendPiece(piece, file.name());
    progress.Show(sent_);
  }
  return sent_;
}

// A write that ends early, with or without an error, may be followed by another one as long as the printer goes on
// taking data: slow printers do so. One that takes nothing for as long as the port allows has stopped.
void PrintJob::SendPiece(const std::vector<uint8_t>& piece, const std::string& file_name) {
  VexoPort* const port = handle_->port;
  const auto length = static_cast<uint32_t>(piece.size());
  for (uint32_t done = 0; done < length;) {
    uint32_t written = 0;
    const int32_t result = port->Write(port, piece.data(), done, length - done, &written);
    done += written;
    sent_ += written;
    const bool in_time = result == VEXO_OK || result == VEXO_ERROR_IO_WRITE_TIMEOUT;
    if (!in_time) {
      monitor_.AbandonWork();
    }
    if (!in_time || written == 0) {
      throw Failure("cannot send all of " + file_name + " to " + printer_name_ + ", " + std::to_string(sent_) +
                        " bytes were sent",
                    result != VEXO_OK ? result : VEXO_ERROR_IO_WRITE_TIMEOUT);
    }
  }
}

uint32_t PrintJob::AwaitEnd(uint32_t limit_ms) {
  const Deadline deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(limit_ms);
  while (!end_value_) {
    const std::optional<News> news = AllNews().Wait(deadline);
    if (!news) {
      throw Failure(task_name_ + " has not ended on " + printer_name_ + " after " + std::to_string(limit_ms) + " ms",
                    ERROR_TIMEOUT);
    }
    React(*news);
  }
  return *end_value_;
}

void PrintJob::React(const News& news) {
  switch (news.kind) {
    case News::Kind::kJobEvent:
      if (news.event.ended && news.event.task == task_) {
        end_value_ = news.event.value;
      }
      break;
    case News::Kind::kConnectionLost:
      monitor_.AbandonWork();
      throw Failure("lost the connection to " + printer_name_ + " before the end of " + task_name_, news.code);
    case News::Kind::kInterrupted:
      throw Failure("stopped before the end of " + task_name_, ERROR_CANCELLED);
    case News::Kind::kUsbEvent:
      break;  // Nobody watches for them here.
  }
}

}  // namespace vexoctl
