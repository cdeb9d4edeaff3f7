#include "virtual_printer/model/print_jobs.h"

#include <algorithm>

namespace virtual_printer {

std::string TaskText(TaskNumber task) {
  const std::string digits = std::to_string(task);
  return std::string(4 - digits.size(), '0') + digits;
}

std::optional<TaskNumber> ParseTask(std::string_view text) {
  if (text.size() != 4 || text.find_first_not_of("0123456789") != std::string_view::npos) {
    return std::nullopt;
  }
  return static_cast<TaskNumber>(std::stoi(std::string(text)));
}

template <typename Jobs>
auto PrintJobs::FindLast(Jobs& jobs, int connection) {
  return std::find_if(jobs.rbegin(), jobs.rend(), [&](const Job& job) { return job.connection == connection; });
}

bool PrintJobs::HasOpenJob(int connection, Time now) const {
  const auto job = FindLast(jobs_, connection);
  return job != jobs_.rend() && now < job->complete_at;
}

void PrintJobs::AddData(int connection, TaskNumber task, Time now) {
  if (!HasOpenJob(connection, now)) {
    jobs_.push_back({connection, task, now, now + times_.quiet});
    return;
  }
  const auto job = FindLast(jobs_, connection);
  job->last_data = now;
  job->complete_at = now + times_.quiet;
}

void PrintJobs::Complete(int connection, Time now) {
  if (HasOpenJob(connection, now)) {
    FindLast(jobs_, connection)->complete_at = now;
  }
}

std::size_t PrintJobs::DropWaiting() {
  const std::size_t kept = printing_ ? 1 : 0;
  const std::size_t dropped = jobs_.size() - kept;
  jobs_.erase(jobs_.begin() + static_cast<std::ptrdiff_t>(kept), jobs_.end());
  return dropped;
}

std::vector<JobReport> PrintJobs::Advance(Time now) {
  std::vector<JobReport> reports;
  while (!jobs_.empty()) {
    const Job& job = jobs_.front();
    if (!printing_) {
      printing_ = true;
      printing_since_ = std::max(printing_since_, job.last_data);
      reports.push_back({JobReport::Kind::kStarted, job.connection, job.task});
    }
    const Time end = EndOfPrinting();
    if (now < end) {
      break;
    }
    reports.push_back({JobReport::Kind::kEnded, job.connection, job.task});
    jobs_.pop_front();
    printing_ = false;
    printing_since_ = end;
  }
  return reports;
}

std::optional<Time> PrintJobs::NextDeadline() const {
  return printing_ ? std::optional<Time>(EndOfPrinting()) : std::nullopt;
}

Time PrintJobs::EndOfPrinting() const {
  const Job& job = jobs_.front();
  return std::max(std::max(printing_since_, job.last_data) + times_.printing, job.complete_at);
}

void PrintJobs::Clear() {
  jobs_.clear();
  printing_ = false;
}

}  // namespace virtual_printer
