// Clean-up when a thread ends and when the library is unloaded.
#include <windows.h>

#include <array>

#include "platform/windows/exception_memory.h"

namespace {

#if defined(__MINGW32__)

// The compiler's thread library keeps two handles for the thread that initialised the C++ library of this DLL and
// closes them when that thread ends; it also keeps one thread-local slot that it never frees. The thread that unloads
// the DLL lives on, so a host that loads the library for each job would leak two handles every time and run out of
// slots after a thousand. (Half a KiB, the thread library's description of the thread, is still leaked.)

constexpr DWORD kThreadLocalSlots = 64 + 1024;

// Runs the callbacks that the system calls when a thread ends.
void CallThreadCallbacks(HINSTANCE library) {
  const auto* const base = reinterpret_cast<const char*>(library);
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* const header = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& entry = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_TLS];
  if (entry.Size == 0) {
    return;
  }
  const auto* const directory = reinterpret_cast<const IMAGE_TLS_DIRECTORY*>(base + entry.VirtualAddress);
  const auto* callback = reinterpret_cast<const PIMAGE_TLS_CALLBACK*>(directory->AddressOfCallBacks);
  for (; callback != nullptr && *callback != nullptr; ++callback) {
    (*callback)(library, DLL_THREAD_DETACH, nullptr);
  }
}

// The slot whose value the callbacks clear belongs to this DLL.
void DetachThread(HINSTANCE library) {
  std::array<bool, kThreadLocalSlots> used = {};
  for (DWORD slot = 0; slot < kThreadLocalSlots; ++slot) {
    used[slot] = TlsGetValue(slot) != nullptr;
  }
  CallThreadCallbacks(library);
  for (DWORD slot = 0; slot < kThreadLocalSlots; ++slot) {
    if (used[slot] && TlsGetValue(slot) == nullptr) {
      TlsFree(slot);
    }
  }
}

#else

void DetachThread(HINSTANCE /*library*/) {}

#endif

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID process_ends) {
  if (reason == DLL_THREAD_DETACH) {
    vexo::platform::ReleaseExceptionMemoryOfThread();
  }
  if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) {
    vexo::platform::ReleaseExceptionMemory();
    DetachThread(library);
  }
  return TRUE;
}
