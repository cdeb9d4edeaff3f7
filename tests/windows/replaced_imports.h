// Functions that a loaded library imports, replaced by the test's own.
#ifndef VEXO_TESTS_WINDOWS_REPLACED_IMPORTS_H_
#define VEXO_TESTS_WINDOWS_REPLACED_IMPORTS_H_

#include <windows.h>

#include <utility>
#include <vector>

namespace vexo::test {

// Names of functions, and what to call instead.
using ReplacedImports = std::vector<std::pair<const char*, void*>>;

// For the calls of `library` alone. @return how many of its imports were replaced.
int ReplaceImports(HMODULE library, const ReplacedImports& replacements);

// The system's own, whatever an import has been replaced by.
template <typename Function>
Function* SystemFunction(const char* library, const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(library), name)));
}

// Replaces imports from one library of the system while it lives; `replacements` must be found, all of them.
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
