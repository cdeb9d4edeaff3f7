// The one lock of the port layer. It guards the abort flags of all ports and lives as long as any port does.
#ifndef VEXO_PORT_PORT_LOCK_H_
#define VEXO_PORT_PORT_LOCK_H_

#include <cstdint>

namespace vexo {

// A share in the lock: the first one creates it, the last one given back deletes it. Ports may be opened and closed on
// any thread.
class PortLockReference {
 public:
  PortLockReference() = default;
  PortLockReference(PortLockReference&& other) noexcept;
  PortLockReference& operator=(PortLockReference&&) = delete;
  PortLockReference(const PortLockReference&) = delete;
  PortLockReference& operator=(const PortLockReference&) = delete;
  ~PortLockReference();

  // 0, or the system's error code when the lock cannot be created; nothing is held then.
  int32_t Take();
  void GiveBack();

 private:
  bool held_ = false;
};

// Shares held now, for tests.
uint32_t PortLockReferenceCount();

// Set by Abort on any thread, read by the thread that transfers; both under the lock. Only used while the port that
// owns the flag holds a share in the lock.
class AbortFlag {
 public:
  void Set();
  bool IsSet() const;

 private:
  bool set_ = false;
};

}  // namespace vexo

#endif  // VEXO_PORT_PORT_LOCK_H_
