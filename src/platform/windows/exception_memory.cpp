// Replaces the C++ library's allocation of exceptions. Most exceptions report a lack of memory, but MinGW's C++ library
// itself needs memory to throw: it allocates when a thread throws for the first time and aborts if that fails, and the
// lock of its emergency pool allocates when it is first taken and throws if that fails, which needs the pool.
#if defined(__MINGW32__)

#include <windows.h>

#include <cxxabi.h>
#include <unwind.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "platform/windows/exception_memory.h"

namespace {

// Preallocated blocks for when memory has run out.
template <typename Block, size_t count>
class Reserve {
 public:
  // Returns null when none is left.
  Block* Take() {
    for (size_t i = 0; i < count; ++i) {
      if (!taken_[i].exchange(true)) {
        return &blocks_[i];
      }
    }
    return nullptr;
  }

  // Returns false when the block is not from this reserve.
  bool GiveBack(const void* block) {
    for (size_t i = 0; i < count; ++i) {
      if (&blocks_[i] == block) {
        taken_[i] = false;
        return true;
      }
    }
    return false;
  }

 private:
  std::array<Block, count> blocks_;
  std::array<std::atomic<bool>, count> taken_;
};

// The per-thread state of the C++ ABI.
struct ThreadState {
  void* caught_exceptions;
  unsigned int uncaught_exceptions;
};
Reserve<ThreadState, 64> g_thread_states;

// A thread-local slot. Setting it needs no memory unless the host has used up the first 64. Initialised before any
// other code of the library.
struct ThreadSlot {
  const DWORD index = TlsAlloc();
};
__attribute__((init_priority(101))) const ThreadSlot g_slot;

ThreadState* StateOfThread() {
  const DWORD error = GetLastError();  // TlsGetValue changes it.
  auto* state = static_cast<ThreadState*>(TlsGetValue(g_slot.index));
  if (state == nullptr) {
    state = static_cast<ThreadState*>(std::malloc(sizeof(ThreadState)));
    if (state == nullptr) {
      state = g_thread_states.Take();
    }
    if (state == nullptr || TlsSetValue(g_slot.index, state) == FALSE) {
      std::terminate();
    }
    *state = {};
  }
  SetLastError(error);
  return state;
}

// The header in front of an exception object. The ABI defines it, but no header of the compiler declares it; the
// compiler's throw and catch functions fill it in.
struct UncountedHeader {
  std::type_info* type;
  void (*destructor)(void*);
  void (*unexpected)();
  std::terminate_handler terminate;
  void* next;
  int handlers;
  int handler_switch;
  const unsigned char* action;
  const unsigned char* language_data;
  _Unwind_Ptr catch_temporary;
  void* adjusted;
  _Unwind_Exception unwind;
};
struct ExceptionHeader {
  int references;
  UncountedHeader exception;
};
static_assert(sizeof(void*) != 8 || sizeof(ExceptionHeader) == 160, "not the compiler's header");

struct alignas(ExceptionHeader) ReservedException {
  static constexpr size_t kSize =
      512;  // Header and object; the library's and the standard's exceptions need half of it.
  unsigned char bytes[kSize];
};
Reserve<ReservedException, 32> g_exceptions;

void* Allocate(size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr && size <= ReservedException::kSize) {
    memory = g_exceptions.Take();
  }
  if (memory == nullptr) {
    std::terminate();
  }
  return memory;
}

void Free(void* memory) {
  if (!g_exceptions.GiveBack(memory)) {
    std::free(memory);
  }
}

}  // namespace

namespace __cxxabiv1 {

extern "C" __cxa_eh_globals* __cxa_get_globals() noexcept {
  return reinterpret_cast<__cxa_eh_globals*>(StateOfThread());
}

extern "C" __cxa_eh_globals* __cxa_get_globals_fast() noexcept { return __cxa_get_globals(); }

extern "C" void* __cxa_allocate_exception(size_t size) noexcept {
  auto* const header = static_cast<ExceptionHeader*>(Allocate(sizeof(ExceptionHeader) + size));
  std::memset(header, 0, sizeof(*header));
  return header + 1;
}

extern "C" void __cxa_free_exception(void* object) noexcept { Free(static_cast<ExceptionHeader*>(object) - 1); }

// For std::exception_ptr, whose header is shorter.
extern "C" __cxa_dependent_exception* __cxa_allocate_dependent_exception() noexcept {
  void* const header = Allocate(sizeof(ExceptionHeader));
  std::memset(header, 0, sizeof(ExceptionHeader));
  return static_cast<__cxa_dependent_exception*>(header);
}

extern "C" void __cxa_free_dependent_exception(__cxa_dependent_exception* header) noexcept { Free(header); }

}  // namespace __cxxabiv1

namespace vexo::platform {

void ReleaseExceptionMemoryOfThread() {
  void* const state = TlsGetValue(g_slot.index);
  if (state != nullptr) {
    TlsSetValue(g_slot.index, nullptr);
    if (!g_thread_states.GiveBack(state)) {
      std::free(state);
    }
  }
}

void ReleaseExceptionMemory() {
  ReleaseExceptionMemoryOfThread();
  TlsFree(g_slot.index);
}

}  // namespace vexo::platform

#endif
