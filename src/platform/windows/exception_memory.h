// The memory of exceptions.
#ifndef VEXO_PLATFORM_WINDOWS_EXCEPTION_MEMORY_H_
#define VEXO_PLATFORM_WINDOWS_EXCEPTION_MEMORY_H_

namespace vexo::platform {

#if defined(__MINGW32__)

// When a thread ends: what is kept for the exceptions that it throws.
void ReleaseExceptionMemoryOfThread();

// When the library is unloaded. Nothing may throw any more.
void ReleaseExceptionMemory();

#else

inline void ReleaseExceptionMemoryOfThread() {}
inline void ReleaseExceptionMemory() {}

#endif

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_EXCEPTION_MEMORY_H_
