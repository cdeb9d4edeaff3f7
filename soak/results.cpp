#include "soak/results.h"

#include <cstddef>

namespace vexo::test {
namespace {

constexpr size_t kMaxFaults = 50;

}  // namespace

bool Results::Count(const std::string& operation, int32_t code, const Codes& documented) {
  {
    const std::lock_guard<std::mutex> guard(mutex_);
    ++counts_[operation][code];
  }
  Require(code == 0 || documented.count(code) != 0, operation + " gave " + std::to_string(code));
  return code == 0;
}

void Results::Require(bool condition, const std::string& fault) {
  const std::lock_guard<std::mutex> guard(mutex_);
  if (!condition && (faults_.count(fault) != 0 || faults_.size() < kMaxFaults)) {
    ++faults_[fault];
  }
}

void Results::Print(std::ostream* out) {
  const std::lock_guard<std::mutex> guard(mutex_);
  for (const auto& [operation, codes] : counts_) {
    uint64_t total = 0;
    std::string failures;
    for (const auto& [code, count] : codes) {
      total += count;
      failures += code == 0 ? "" : "  " + std::to_string(code) + ": " + std::to_string(count);
    }
    *out << "done " << operation << ": " << total << failures << '\n';
  }
  for (const auto& [fault, count] : faults_) {
    *out << "FAULT " << fault << " (" << count << ")\n";
  }
}

bool Results::HasFaults() {
  const std::lock_guard<std::mutex> guard(mutex_);
  return !faults_.empty();
}

}  // namespace vexo::test
