// A copy of the DLL, loaded for itself, whose memory a test takes away.
#ifndef VEXO_TESTS_WINDOWS_FAULTY_LIBRARY_H_
#define VEXO_TESTS_WINDOWS_FAULTY_LIBRARY_H_

#include <windows.h>

#include <cstdint>
#include <string>

namespace vexo::test {

// From the next allocation of the DLL on, counted from 1, `first` fails: that one alone, on the thread that asked for
// the fault, or with all that follow, on every thread. Allocations are what the DLL imports to make memory, events,
// semaphores, timers and threads with; its runtime libraries use the same.
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
