#include "windows/replaced_imports.h"

#include <gtest/gtest.h>

#include <cstring>

namespace vexo::test {
namespace {

template <typename T>
T* AtOffset(HMODULE library, ULONGLONG offset) {
  return reinterpret_cast<T*>(reinterpret_cast<char*>(library) + offset);
}

void* ReplacementOf(const char* name, const ReplacedImports& replacements) {
  for (const auto& [replaced, by] : replacements) {
    if (std::strcmp(name, replaced) == 0) {
      return by;
    }
  }
  return nullptr;
}

}  // namespace

int ReplaceImports(HMODULE library, const ReplacedImports& replacements) {
  const auto* const dos = AtOffset<IMAGE_DOS_HEADER>(library, 0);
  const auto* const header = AtOffset<IMAGE_NT_HEADERS>(library, static_cast<DWORD>(dos->e_lfanew));
  const DWORD offset = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  int replaced = 0;
  for (const auto* from = AtOffset<IMAGE_IMPORT_DESCRIPTOR>(library, offset); from->Name != 0; ++from) {
    const auto* name = AtOffset<IMAGE_THUNK_DATA>(library, from->OriginalFirstThunk);
    auto* entry = AtOffset<IMAGE_THUNK_DATA>(library, from->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++entry) {
      if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
        continue;
      }
      void* const by = ReplacementOf(
          reinterpret_cast<const char*>(AtOffset<IMAGE_IMPORT_BY_NAME>(library, name->u1.AddressOfData)->Name),
          replacements);
      DWORD protection = 0;
      if (by != nullptr && VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &protection) != FALSE) {
        entry->u1.Function = reinterpret_cast<ULONG_PTR>(by);
        VirtualProtect(entry, sizeof(*entry), protection, &protection);
        ++replaced;
      }
    }
  }
  return replaced;
}

ScopedImports::ScopedImports(HMODULE importer, const char* library, ReplacedImports replacements)
    : importer_(importer), originals_(std::move(replacements)) {
  EXPECT_EQ(ReplaceImports(importer_, originals_), static_cast<int>(originals_.size()));
  for (auto& [name, function] : originals_) {
    function = reinterpret_cast<void*>(SystemFunction<void()>(library, name));
  }
}

ScopedImports::~ScopedImports() { ReplaceImports(importer_, originals_); }

}  // namespace vexo::test
