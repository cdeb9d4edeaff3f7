#include "platform/critical_section.h"

#include <windows.h>

#include <new>

namespace vexo::platform {
namespace {

class WindowsCriticalSection : public CriticalSection {
 public:
  ~WindowsCriticalSection() override {
    if (initialized_) {
      DeleteCriticalSection(&section_);
    }
  }

  bool Initialize(uint32_t spin_count) {
    initialized_ = InitializeCriticalSectionAndSpinCount(&section_, spin_count) != 0;
    return initialized_;
  }

  void Enter() override { EnterCriticalSection(&section_); }
  void Leave() override { LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_ = {};
  bool initialized_ = false;
};

}  // namespace

std::unique_ptr<CriticalSection> CriticalSection::Create(uint32_t spin_count, int32_t* error) {
  std::unique_ptr<WindowsCriticalSection> section(new (std::nothrow) WindowsCriticalSection);
  if (section == nullptr) {
    *error = ERROR_NOT_ENOUGH_MEMORY;
    return nullptr;
  }
  if (!section->Initialize(spin_count)) {
    *error = static_cast<int32_t>(GetLastError());
    return nullptr;
  }
  *error = 0;
  return section;
}

}  // namespace vexo::platform
