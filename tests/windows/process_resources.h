// What this process holds of the system, to show that nothing of it is lost.
#ifndef VEXO_TESTS_WINDOWS_PROCESS_RESOURCES_H_
#define VEXO_TESTS_WINDOWS_PROCESS_RESOURCES_H_

#include <cstddef>

namespace vexo::test {

size_t CountHandles();
size_t CountThreads();

// What is allocated on all heaps, in bytes.
size_t CountHeapBytes();

}  // namespace vexo::test

#endif  // VEXO_TESTS_WINDOWS_PROCESS_RESOURCES_H_
