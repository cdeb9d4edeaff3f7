// What the benchmarks share: a stopwatch, medians, and the form of their results.
#ifndef VEXO_BENCHMARKS_MEASURE_H_
#define VEXO_BENCHMARKS_MEASURE_H_

#include <algorithm>
#include <chrono>
#include <cstdio>
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

// One line for scripts/bench.sh: what was measured, the figure, how it relates to its limit when it is well.
inline void Report(const char* measure, double value, const char* relation, double limit) {
  std::printf("%s;%.3f;%s;%g\n", measure, value, relation, limit);
}

}  // namespace vexo::benchmark

#endif  // VEXO_BENCHMARKS_MEASURE_H_
