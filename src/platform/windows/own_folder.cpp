#include "platform/own_folder.h"

#include <windows.h>

#include <string>

namespace vexo::platform {
namespace {

constexpr size_t kMaxExtendedPath = 32768;

HMODULE OwnModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&OwnModule), &module);
  return module;
}

// Includes the last backslash. Empty when the system does not report the path.
std::wstring OwnFolder() {
  for (size_t size = MAX_PATH; size <= kMaxExtendedPath; size *= 2) {
    std::wstring path(size, L'\0');
    const DWORD length = GetModuleFileNameW(OwnModule(), path.data(), static_cast<DWORD>(size));
    if (length < size) {  // Otherwise the path was truncated.
      path.resize(length);
      return path.substr(0, path.find_last_of(L'\\') + 1);
    }
  }
  return {};
}

}  // namespace

OwnedFile OpenOwnFile(const char* name) {
  const std::wstring folder = OwnFolder();
  const std::string_view file = name;
  return OwnedFile(folder.empty() ? nullptr
                                  : _wfopen((folder + std::wstring(file.begin(), file.end())).c_str(), L"rb"));
}

}  // namespace vexo::platform
