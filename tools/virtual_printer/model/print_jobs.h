#ifndef VIRTUAL_PRINTER_MODEL_PRINT_JOBS_H_
#define VIRTUAL_PRINTER_MODEL_PRINT_JOBS_H_

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <vector>

#include "virtual_printer/model/task_number.h"

namespace virtual_printer {

// Whoever drives the printer tells it the time; so a test lets hours pass in no time.
using Time = std::chrono::steady_clock::time_point;

// How a printer takes its time.
struct JobTimes {
  std::chrono::milliseconds printing{500};  // From the start of a job, or its last data, to its end.
  std::chrono::milliseconds quiet{200};     // Without data for this long, a job has all of its data.
};

struct JobReport {
  enum class Kind { kStarted, kEnded };

  Kind kind = Kind::kStarted;
  int connection = 0;  // Which brought the job.
  TaskNumber task = kNoTask;
};

// The jobs of a printer. It prints one at a time, in the order in which their first data arrived. Data of one
// connection belongs to one job until that job is complete, or the connection pauses.
class PrintJobs {
 public:
  explicit PrintJobs(JobTimes times) : times_(times) {}

  // Print data of the connection: makes a job with this task number, unless the connection has one that takes data.
  void AddData(int connection, TaskNumber task, Time now);

  // Whether the connection has a job to which data belongs that arrives now.
  bool TakesData(int connection, Time now) const;

  // The connection's job has all of its data now.
  void Complete(int connection, Time now);

  // Throws away the jobs that are not being printed yet, and says how many there were.
  std::size_t DropWaiting();

  // Throws away all jobs.
  void Clear();

  // Lets time pass; gives what has happened until then, in order.
  std::vector<JobReport> Advance(Time now);

  // When Advance will have something to give; nothing while no job is printed.
  std::optional<Time> NextDeadline() const;

 private:
  struct Job {
    int connection;
    TaskNumber task;
    Time last_data;
    Time complete_at;  // Unless more data arrives before.
  };

  // The connection's last job; only that one may lack data.
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
