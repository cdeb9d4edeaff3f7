// The lock of the port layer. It guards the abort flags of all ports and exists as long as any port does.
#ifndef VEXO_PORT_PORT_LOCK_H_
#define VEXO_PORT_PORT_LOCK_H_

#include <cstdint>

namespace vexo {

// A reference to the lock: the first one creates it, the last one deletes it. Ports may be opened and closed on any
// thread.
class PortLockReference {
 public:
  PortLockReference() = default;
  PortLockReference(PortLockReference&& other) noexcept;
  PortLockReference& operator=(PortLockReference&&) = delete;
  PortLockReference(const PortLockReference&) = delete;
  PortLockReference& operator=(const PortLockReference&) = delete;
  ~PortLockReference();

  // Returns 0, or the system's error code, with nothing held, when the lock cannot be created.
  int32_t Take();
  void GiveBack();

 private:
  bool held_ = false;
};

// Number of references, for tests.
uint32_t PortLockReferenceCount();

// Set by Abort on any thread, read by the thread that transfers, both under the lock. Its port must hold a reference to
// the lock.
//
// Compatibility: never reset, so an aborted port stays unusable until it is replaced.
class AbortFlag {
 public:
  void Set();
  bool IsSet() const;

 private:
  bool set_ = false;
};

}  // namespace vexo

#endif  // VEXO_PORT_PORT_LOCK_H_
