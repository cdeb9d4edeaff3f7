// What the work of a soak came to: how often each operation was done, and how often it failed with which code.
#ifndef VEXO_SOAK_RESULTS_H_
#define VEXO_SOAK_RESULTS_H_

#include <cstdint>
#include <map>
#include <mutex>
#include <ostream>
#include <set>
#include <string>

namespace vexo::test {

using Codes = std::set<int32_t>;

// To be used by any thread.
class Results {
 public:
  // Counts an operation. A code that is neither 0 nor one of the documented ones is a fault. True: it was 0.
  bool Count(const std::string& operation, int32_t code, const Codes& documented);

  // Something that must not happen. The first ones are kept in words.
  void Require(bool condition, const std::string& fault);

  void Print(std::ostream* out);
  bool HasFaults();

 private:
  std::mutex mutex_;
  std::map<std::string, std::map<int32_t, uint64_t>> counts_;
  std::map<std::string, uint64_t> faults_;
};

}  // namespace vexo::test

#endif  // VEXO_SOAK_RESULTS_H_
