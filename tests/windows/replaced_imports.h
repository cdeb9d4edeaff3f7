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

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_REPLACED_IMPORTS_H_
