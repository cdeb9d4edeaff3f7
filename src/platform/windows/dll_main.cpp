// What the library has to do itself when it is loaded and unloaded.
#include <windows.h>

namespace {

// The compiler's thread library keeps two handles for each thread that has run code of this DLL, and gives them back
// when the thread ends. The thread that unloads the DLL lives on: without this, a host that loads the library for each
// job would lose two handles every time. Telling the DLL's own thread callbacks that the thread leaves is what the
// system does for one that ends. (Other threads that have called the library and outlive it keep theirs: only the
// system could tell the DLL of them.)
void LeaveThread(HINSTANCE library) {
#if defined(__MINGW32__)
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
#else
  static_cast<void>(library);
#endif
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID process_ends) {
  if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) {
    LeaveThread(library);
  }
  return TRUE;
}
