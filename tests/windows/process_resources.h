// System resources of this process, to detect leaks.
#ifndef VEXO_TESTS_WINDOWS_PROCESS_RESOURCES_H_
#define VEXO_TESTS_WINDOWS_PROCESS_RESOURCES_H_

#include <cstddef>

namespace vexo::test {

size_t CountHandles();
size_t CountThreads();

// Bytes allocated on all heaps.
size_t CountHeapBytes();

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_PROCESS_RESOURCES_H_
