// Memory for exceptions.
#ifndef VEXO_PLATFORM_WINDOWS_EXCEPTION_MEMORY_H_
#define VEXO_PLATFORM_WINDOWS_EXCEPTION_MEMORY_H_

namespace vexo::platform {

#if defined(__MINGW32__)

// Frees the exception state of the calling thread, when it ends.
void ReleaseExceptionMemoryOfThread();

// Frees everything, when the library is unloaded. Nothing may throw afterwards.
void ReleaseExceptionMemory();

#else

inline void ReleaseExceptionMemoryOfThread() {}
inline void ReleaseExceptionMemory() {}

#endif

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_EXCEPTION_MEMORY_H_
