#ifndef VIRTUAL_PRINTER_MODEL_PRINT_JOBS_H_
#define VIRTUAL_PRINTER_MODEL_PRINT_JOBS_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace virtual_printer {

// Always passed in, so that tests can let hours pass at once.
using Time = std::chrono::steady_clock::time_point;

// The number by which a host follows its print job; four digits on the wire.
using TaskNumber = std::uint16_t;

constexpr TaskNumber kNoTask = 0;  // For jobs whose host has not set a number.
constexpr TaskNumber kMaxTask = 9999;

// Four digits: 7 is "0007".
std::string TaskText(TaskNumber task);

// Returns nothing unless the text is four digits.
std::optional<TaskNumber> ParseTask(std::string_view text);

struct JobTimes {
  std::chrono::milliseconds printing{500};  // From the start of a job, or its last data, to its end.
  std::chrono::milliseconds quiet{200};     // A pause of this length completes the data of a job.
};

struct JobReport {
  enum class Kind { kStarted, kEnded };

  Kind kind = Kind::kStarted;
  int connection = 0;  // The one that sent the job.
  TaskNumber task = kNoTask;
};

// The jobs of a printer, printed one at a time in the order of their first data. The data of a connection belongs to
// one job until that job is complete or the connection pauses.
class PrintJobs {
 public:
  explicit PrintJobs(JobTimes times) : times_(times) {}

  // Adds print data to the connection's open job, or begins a job with this task number.
  void AddData(int connection, TaskNumber task, Time now);

  // Whether the connection has a job that is still open for data.
  bool HasOpenJob(int connection, Time now) const;

  // The connection's job has all of its data.
  void Complete(int connection, Time now);

  // Discards the jobs that are not being printed yet, and returns their number.
  std::size_t DropWaiting();

  // Discards all jobs.
  void Clear();

  // Returns what has happened until now, in order.
  std::vector<JobReport> Advance(Time now);

  // When the job being printed ends; nothing if none is printed.
  std::optional<Time> NextDeadline() const;

 private:
  struct Job {
    int connection;
    TaskNumber task;
    Time last_data;
    Time complete_at;  // Unless more data arrives before.
  };

  // The connection's last job, the only one that may be open.
  template <typename Jobs>
  static auto FindLast(Jobs& jobs, int connection);

  Time EndOfPrinting() const;

  const JobTimes times_;
  std::deque<Job> jobs_;
  bool printing_ = false;  // The front of jobs_...
  Time printing_since_;    // ...since then.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_MODEL_PRINT_JOBS_H_
