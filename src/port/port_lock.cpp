#include "port/port_lock.h"

#include <atomic>
#include <memory>
#include <utility>

#include "platform/clock.h"
#include "platform/critical_section.h"

namespace vexo {
namespace {

// The high bit makes older systems allocate everything at once, so that entering cannot fail later.
constexpr uint32_t kSpinCount = 0x80000000;

struct SharedLock {
  std::atomic<bool> busy{false};  // Guards the two members below; never held while waiting.
  uint32_t references = 0;
  std::unique_ptr<platform::CriticalSection> section;
};

SharedLock g_lock;

class SpinGuard {
 public:
  SpinGuard() {
    while (g_lock.busy.exchange(true, std::memory_order_acquire)) {
      platform::YieldThread();
    }
  }
  SpinGuard(const SpinGuard&) = delete;
  SpinGuard& operator=(const SpinGuard&) = delete;
  ~SpinGuard() { g_lock.busy.store(false, std::memory_order_release); }
};

// A reference keeps the section alive, so its holder may use it without the spin flag.
class SectionGuard {
 public:
  SectionGuard() { g_lock.section->Enter(); }
  SectionGuard(const SectionGuard&) = delete;
  SectionGuard& operator=(const SectionGuard&) = delete;
  ~SectionGuard() { g_lock.section->Leave(); }
};

}  // namespace

PortLockReference::PortLockReference(PortLockReference&& other) noexcept : held_(std::exchange(other.held_, false)) {}

PortLockReference::~PortLockReference() { GiveBack(); }

int32_t PortLockReference::Take() {
  GiveBack();
  const SpinGuard guard;
  if (g_lock.references == 0) {
    int32_t error = 0;
    g_lock.section = platform::CriticalSection::Create(kSpinCount, &error);
    if (g_lock.section == nullptr) {
      return error;
    }
  }
  ++g_lock.references;
  held_ = true;
  return 0;
}

void PortLockReference::GiveBack() {
  if (!std::exchange(held_, false)) {
    return;
  }
  const SpinGuard guard;
  if (--g_lock.references == 0) {
    g_lock.section.reset();
  }
}

uint32_t PortLockReferenceCount() {
  const SpinGuard guard;
  return g_lock.references;
}

void AbortFlag::Set() {
  const SectionGuard guard;
  set_ = true;
}

bool AbortFlag::IsSet() const {
  const SectionGuard guard;
  return set_;
}

}  // namespace vexo
