// Memory that runs out on request: the test programs' operator new counts, and fails once where a test wants it to.
#ifndef VEXO_TESTS_SUPPORT_ALLOCATION_FAULTS_H_
#define VEXO_TESTS_SUPPORT_ALLOCATION_FAULTS_H_

#include <cstdint>

namespace vexo::test {

// Makes one allocation of this thread fail: the `nth` from here on, counted from 1. One fault at a time.
class AllocationFault {
 public:
  explicit AllocationFault(uint32_t nth);
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;
  ~AllocationFault() { Lift(); }

  // There is memory again from now on. Whether the fault struck: false when fewer allocations were made.
  bool Lift();
};

// While one lives, allocations of this thread are not counted: what scripted ports and drivers need is not the
// product's.
class UncountedAllocations {
 public:
  UncountedAllocations();
  UncountedAllocations(const UncountedAllocations&) = delete;
  UncountedAllocations& operator=(const UncountedAllocations&) = delete;
  ~UncountedAllocations();

 private:
  const uint32_t countdown_;
};

// Bytes that are allocated now, on all threads.
int64_t LivingBytes();

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_ALLOCATION_FAULTS_H_
