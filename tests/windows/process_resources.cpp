#include "windows/process_resources.h"

#include <windows.h>
#include <winternl.h>

// After windows.h.
#include <tlhelp32.h>

#include <algorithm>
#include <vector>

namespace vexo::test {

// The system's headers do not declare the layout of this list.
size_t CountHandles() {
  struct Entry {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT trace, type;
    ULONG attributes, reserved;
  };
  struct List {
    ULONG_PTR count, reserved;
  };
  constexpr auto kExtendedHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(64);
  std::vector<char> buffer(1 << 20);
  ULONG used = 0;
  while (NtQuerySystemInformation(kExtendedHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()),
                                  &used) != 0) {
    buffer.resize(buffer.size() * 2);
  }
  const auto* const list = reinterpret_cast<const List*>(buffer.data());
  const auto* const entries = reinterpret_cast<const Entry*>(list + 1);
  size_t handles = 0;
  for (ULONG_PTR i = 0; i < list->count; ++i) {
    handles += entries[i].process == GetCurrentProcessId() ? 1 : 0;
  }
  return handles;
}

size_t CountThreads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  size_t threads = 0;
  for (BOOL found = Thread32First(snapshot, &entry); found != 0; found = Thread32Next(snapshot, &entry)) {
    threads += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
  }
  CloseHandle(snapshot);
  return threads;
}

size_t CountHeapBytes() {
  std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
  heaps.resize(std::min<size_t>(heaps.size(), GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data())));
  size_t bytes = 0;
  for (const HANDLE heap : heaps) {
    HeapLock(heap);
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(heap, &entry) != 0) {
      bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
    }
    HeapUnlock(heap);
  }
  return bytes;
}

}  // namespace vexo::test
