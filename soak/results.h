// Results of the soak test: the number of calls of each operation, by result code.
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

// Thread-safe.
class Results {
 public:
  // Counts a call. A code other than 0 and the documented ones is a fault. @return whether the code is 0.
  bool Count(const std::string& operation, int32_t code, const Codes& documented);

  // Records a fault if the condition is false. Only a limited number of different faults is kept.
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
