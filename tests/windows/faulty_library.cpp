#include "windows/faulty_library.h"

#include <gtest/gtest.h>
#include <process.h>

#include <atomic>
#include <cstdlib>

#include "windows/replaced_imports.h"

namespace vexo::test {
namespace {

std::atomic<uint32_t> g_countdown{0};
std::atomic<bool> g_all_that_follow{false};
std::atomic<bool> g_struck{false};
std::atomic<DWORD> g_thread{0};

bool Fails() {
  if (g_all_that_follow && g_struck) {
    return true;
  }
  if (GetCurrentThreadId() != g_thread || g_countdown == 0 || --g_countdown > 0) {
    return false;
  }
  g_struck = true;
  return true;
}

void* Allocate(size_t size) { return Fails() ? nullptr : std::malloc(size); }
void* AllocateZeroed(size_t count, size_t size) { return Fails() ? nullptr : std::calloc(count, size); }
void* Reallocate(void* memory, size_t size) { return Fails() ? nullptr : std::realloc(memory, size); }

template <typename Result, typename Function, typename... Arguments>
Result OrFail(Function function, Arguments... arguments) {
  if (Fails()) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  return function(arguments...);
}

HGLOBAL WINAPI AllocateGlobal(UINT flags, SIZE_T size) { return OrFail<HGLOBAL>(GlobalAlloc, flags, size); }
void* WINAPI AllocateOnHeap(HANDLE heap, DWORD flags, SIZE_T size) {
  return OrFail<void*>(HeapAlloc, heap, flags, size);
}
HANDLE WINAPI MakeEvent(SECURITY_ATTRIBUTES* security, BOOL manual, BOOL set, const char* name) {
  return OrFail<HANDLE>(CreateEventA, security, manual, set, name);
}
HANDLE WINAPI MakeSemaphore(SECURITY_ATTRIBUTES* security, LONG count, LONG most, const char* name) {
  return OrFail<HANDLE>(CreateSemaphoreA, security, count, most, name);
}
HANDLE WINAPI MakeTimer(SECURITY_ATTRIBUTES* security, const wchar_t* name, DWORD flags, DWORD access) {
  return OrFail<HANDLE>(CreateWaitableTimerExW, security, name, flags, access);
}
uintptr_t MakeThread(void* security, unsigned stack, unsigned(__stdcall* run)(void*), void* argument, unsigned flags,
                     unsigned* id) {
  return Fails() ? 0 : _beginthreadex(security, stack, run, argument, flags, id);
}

const ReplacedImports kReplacements = {
    {"malloc", reinterpret_cast<void*>(Allocate)},
    {"calloc", reinterpret_cast<void*>(AllocateZeroed)},
    {"realloc", reinterpret_cast<void*>(Reallocate)},
    {"GlobalAlloc", reinterpret_cast<void*>(AllocateGlobal)},
    {"HeapAlloc", reinterpret_cast<void*>(AllocateOnHeap)},
    {"CreateEventA", reinterpret_cast<void*>(MakeEvent)},
    {"CreateSemaphoreA", reinterpret_cast<void*>(MakeSemaphore)},
    {"CreateWaitableTimerExW", reinterpret_cast<void*>(MakeTimer)},
    {"_beginthreadex", reinterpret_cast<void*>(MakeThread)},
};

std::string CopyOfTheLibrary() {
  char path[MAX_PATH] = {};
  EXPECT_NE(GetModuleFileNameA(LoadLibraryA("vexoextend.dll"), path, MAX_PATH), 0U);
  const std::string copy = "vexoextend_faulty_" + std::to_string(GetCurrentProcessId()) + ".dll";
  EXPECT_NE(CopyFileA(path, copy.c_str(), FALSE), 0);
  return copy;
}

}  // namespace

FaultyLibrary::FaultyLibrary() : file_(CopyOfTheLibrary()), library_(LoadLibraryA(file_.c_str())) {
  EXPECT_GE(ReplaceImports(library_, kReplacements), 6);
}

FaultyLibrary::~FaultyLibrary() {
  EXPECT_NE(FreeLibrary(library_), 0);
  EXPECT_EQ(GetModuleHandleA(file_.c_str()), nullptr) << "still loaded";
  DeleteFileA(file_.c_str());
}

void FaultyLibrary::Plan(const AllocationFaultPlan& plan) const {
  g_struck = false;
  g_all_that_follow = plan.all_that_follow;
  g_thread = GetCurrentThreadId();
  g_countdown = plan.first;
}

bool FaultyLibrary::Lift() const {
  g_all_that_follow = false;
  g_countdown = 0;
  return g_struck;
}

}  // namespace vexo::test
