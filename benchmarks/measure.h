// Shared by the benchmarks: time measurement, medians and the output of results.
#ifndef VEXO_BENCHMARKS_MEASURE_H_
#define VEXO_BENCHMARKS_MEASURE_H_

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace vexo::benchmark {

template <typename Work>
double Seconds(Work work) {
  const auto started = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
}

inline double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Ends the program if a step has failed.
inline void Require(bool succeeded, const char* step) {
  if (!succeeded) {
    std::fprintf(stderr, "benchmark: %s failed, error %lu\n", step, GetLastError());
    std::_Exit(1);
  }
}

// Prints a result for scripts/bench.sh: the measure, its value, and the relation to its limit.
inline void Report(const char* measure, double value, const char* relation, double limit) {
  std::printf("%s;%.3f;%s;%g\n", measure, value, relation, limit);
}

}  // namespace vexo::benchmark

#endif  // VEXO_BENCHMARKS_MEASURE_H_
