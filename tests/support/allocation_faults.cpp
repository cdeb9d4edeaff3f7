#include "support/allocation_faults.h"

#include <malloc.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local uint32_t t_countdown = 0;  // Allocations until the one that fails, which is counted too; 0: none fails.
thread_local bool t_struck = false;
std::atomic<int64_t> g_living_bytes{0};

void* AllocateOrNull(size_t size) {
  if (t_countdown > 0 && --t_countdown == 0) {
    t_struck = true;
    return nullptr;
  }
  void* const memory = std::malloc(size > 0 ? size : 1);
  g_living_bytes += static_cast<int64_t>(malloc_usable_size(memory));
  return memory;
}

void Free(void* memory) {
  g_living_bytes -= static_cast<int64_t>(malloc_usable_size(memory));
  std::free(memory);
}

void* AllocateOrThrow(size_t size) {
  void* const memory = AllocateOrNull(size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

}  // namespace

// All forms are replaced: a sanitizer's own array forms would not come by here.
void* operator new(size_t size) { return AllocateOrThrow(size); }
void* operator new[](size_t size) { return AllocateOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t& /*tag*/) noexcept { return AllocateOrNull(size); }
void* operator new[](size_t size, const std::nothrow_t& /*tag*/) noexcept { return AllocateOrNull(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, size_t /*size*/) noexcept { Free(memory); }
void operator delete[](void* memory, size_t /*size*/) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept { Free(memory); }
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept { Free(memory); }

namespace vexo::test {

AllocationFault::AllocationFault(uint32_t nth) {
  t_struck = false;
  t_countdown = nth;
}

bool AllocationFault::Lift() {
  t_countdown = 0;
  return t_struck;
}

int64_t LivingBytes() { return g_living_bytes; }

UncountedAllocations::UncountedAllocations() : countdown_(std::exchange(t_countdown, 0)) {}

UncountedAllocations::~UncountedAllocations() { t_countdown = countdown_; }

}  // namespace vexo::test
