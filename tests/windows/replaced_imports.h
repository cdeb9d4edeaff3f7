// Replaces functions that a loaded library imports by the test's own.
#ifndef VEXO_TESTS_WINDOWS_REPLACED_IMPORTS_H_
#define VEXO_TESTS_WINDOWS_REPLACED_IMPORTS_H_

#include <windows.h>

#include <utility>
#include <vector>

namespace vexo::test {

// Function names and their replacements.
using ReplacedImports = std::vector<std::pair<const char*, void*>>;

// Affects calls from `library` only. @return the number of imports replaced.
int ReplaceImports(HMODULE library, const ReplacedImports& replacements);

// The system's own function, even if an import of it is replaced.
template <typename Function>
Function* SystemFunction(const char* library, const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(library), name)));
}

// Replaces imports from one system library while it exists. All `replacements` must be found.
class ScopedImports {
 public:
  ScopedImports(HMODULE importer, const char* library, ReplacedImports replacements);
  ScopedImports(const ScopedImports&) = delete;
  ScopedImports& operator=(const ScopedImports&) = delete;
  ~ScopedImports();

 private:
  const HMODULE importer_;
  ReplacedImports originals_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_REPLACED_IMPORTS_H_
