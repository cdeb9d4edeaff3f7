#include "support/allocation_faults.h"

#include <malloc.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local uint32_t t_countdown = 0;  // 1: the next allocation fails; 0: none does.
thread_local bool t_failed = false;
std::atomic<int64_t> g_allocated_bytes{0};

void* AllocateOrNull(size_t size) {
  if (t_countdown > 0 && --t_countdown == 0) {
    t_failed = true;
    return nullptr;
  }
  void* const memory = std::malloc(size > 0 ? size : 1);
  g_allocated_bytes += static_cast<int64_t>(malloc_usable_size(memory));
  return memory;
}

void Free(void* memory) {
  g_allocated_bytes -= static_cast<int64_t>(malloc_usable_size(memory));
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

// All forms are replaced because the sanitizers' array forms do not call the scalar ones.
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
  t_failed = false;
  t_countdown = nth;
}

bool AllocationFault::Lift() {
  t_countdown = 0;
  return t_failed;
}

int64_t AllocatedBytes() { return g_allocated_bytes; }

UncountedAllocations::UncountedAllocations() : countdown_(std::exchange(t_countdown, 0)) {}

UncountedAllocations::~UncountedAllocations() { t_countdown = countdown_; }

}  // namespace vexo::test
