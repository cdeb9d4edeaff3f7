// A separately loaded copy of the DLL whose allocations can be made to fail.
#ifndef VEXO_TESTS_WINDOWS_FAULTY_LIBRARY_H_
#define VEXO_TESTS_WINDOWS_FAULTY_LIBRARY_H_

#include <windows.h>

#include <cstdint>
#include <string>

namespace vexo::test {

// The allocation number `first` of the calling thread fails, counted from 1: either that one only, or also all later
// ones on every thread. Allocations are the imported functions that create memory, events, semaphores, timers and
// threads. The DLL's runtime libraries use them, too.
struct AllocationFaultPlan {
  uint32_t first = 0;  // 0: none.
  bool all_that_follow = false;
};

class FaultyLibrary {
 public:
  FaultyLibrary();
  FaultyLibrary(const FaultyLibrary&) = delete;
  FaultyLibrary& operator=(const FaultyLibrary&) = delete;
  ~FaultyLibrary();

  template <typename Export>
  Export* Find(const char* name) const {
    return reinterpret_cast<Export*>(reinterpret_cast<void*>(GetProcAddress(library_, name)));
  }

  void Plan(const AllocationFaultPlan& plan) const;

  // @return whether an allocation has failed.
  bool Lift() const;

 private:
  const std::string file_;
  HMODULE library_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_FAULTY_LIBRARY_H_
