#include "platform/critical_section.h"

#include <cerrno>
#include <mutex>
#include <new>

namespace vexo::platform {
namespace {

class MutexCriticalSection : public CriticalSection {
 public:
  void Enter() override { mutex_.lock(); }
  void Leave() override { mutex_.unlock(); }

 private:
  std::recursive_mutex mutex_;
};

}  // namespace

std::unique_ptr<CriticalSection> CriticalSection::Create(uint32_t /*spin_count*/, int32_t* error) {
  std::unique_ptr<CriticalSection> section(new (std::nothrow) MutexCriticalSection);
  *error = section == nullptr ? ENOMEM : 0;
  return section;
}

}  // namespace vexo::platform
