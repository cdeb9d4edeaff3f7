// The lock that the port layer shares between threads.
#ifndef VEXO_PLATFORM_CRITICAL_SECTION_H_
#define VEXO_PLATFORM_CRITICAL_SECTION_H_

#include <cstdint>
#include <memory>

namespace vexo::platform {

// Recursive: the thread that holds it may enter it again.
class CriticalSection {
 public:
  // Returns null on failure, with the system's error code in *error. `spin_count` is the number of attempts before the
  // thread waits; systems without such a setting ignore it.
  static std::unique_ptr<CriticalSection> Create(uint32_t spin_count, int32_t* error);

  virtual ~CriticalSection() = default;
  virtual void Enter() = 0;
  virtual void Leave() = 0;
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_CRITICAL_SECTION_H_
