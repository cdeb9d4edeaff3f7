// Simulated memory shortage: replaces operator new so that a test can make a chosen allocation fail.
#ifndef VEXO_TESTS_SUPPORT_ALLOCATION_FAULTS_H_
#define VEXO_TESTS_SUPPORT_ALLOCATION_FAULTS_H_

#include <cstdint>

namespace vexo::test {

// Makes the `nth` allocation of this thread fail, counted from 1; 0: none. Only one fault may be active at a time.
class AllocationFault {
 public:
  explicit AllocationFault(uint32_t nth);
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;
  ~AllocationFault() { Lift(); }

  // Ends the fault. @return whether an allocation has failed; false if there were fewer than `nth`.
  bool Lift();
};

// Excludes allocations of this thread from the count while it exists. Test doubles use it: only the library's own
// allocations should fail.
class UncountedAllocations {
 public:
  UncountedAllocations();
  UncountedAllocations(const UncountedAllocations&) = delete;
  UncountedAllocations& operator=(const UncountedAllocations&) = delete;
  ~UncountedAllocations();

 private:
  const uint32_t countdown_;
};

// Bytes currently allocated, on all threads.
int64_t AllocatedBytes();

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_ALLOCATION_FAULTS_H_
