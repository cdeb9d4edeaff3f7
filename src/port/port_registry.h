// All port objects that this library made. It answers the two questions that a record, which hosts can copy and
// overwrite, cannot answer soundly itself: whose is this object, and does its driver still exist?
#ifndef VEXO_PORT_PORT_REGISTRY_H_
#define VEXO_PORT_PORT_REGISTRY_H_

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>

#include "platform/mutex.h"
#include "port/port_driver.h"
#include "port/port_lock.h"
#include "vexo/printer.h"

namespace vexo {

// A driver with its share in the port lock. Whoever lets go of it last closes the device: the thread that closes the
// port, or another one that still has an operation under way and must not lose the device in the middle of it.
class LiveDriver {
 public:
  LiveDriver(std::unique_ptr<PortDriver> driver, PortLockReference lock);
  LiveDriver(const LiveDriver&) = delete;
  LiveDriver& operator=(const LiveDriver&) = delete;
  ~LiveDriver();

  PortDriver& operator*() const { return *driver_; }
  PortDriver* operator->() const { return driver_.get(); }

 private:
  friend class PortRegistry;

  PortLockReference lock_;  // Given back last: the driver may read its abort flag until it is gone.
  std::shared_ptr<PortDriver> driver_;
  std::list<VexoPort>::iterator record_;
  std::list<std::shared_ptr<PortDriver>> keepsake_;  // See PortRegistry::Remove.
};

// Safe to use from any thread.
class PortRegistry {
 public:
  PortRegistry() : content_(std::make_unique<Content>()) {}
  PortRegistry(const PortRegistry&) = delete;
  PortRegistry& operator=(const PortRegistry&) = delete;
  ~PortRegistry();

  // A new port object: a copy of `prototype` with the driver filled in. All prototypes have the same operations. Throws
  // std::bad_alloc, nothing is left then.
  VexoPort* Add(const VexoPort& prototype, std::unique_ptr<PortDriver> driver, PortLockReference lock);

  // The driver for one operation on `port`, kept alive by the pointer: another thread may close the port meanwhile.
  // Null with *error -6 (no object, wrong magic) or -308 (no such driver). A copy of a record reaches the same driver.
  std::shared_ptr<LiveDriver> Use(const VexoPort* port, int32_t* error);

  // Takes a port object out and gives what it owned; its record loses its magic. Null: the object was not made here,
  // or was taken out before. The driver of a Bluetooth port stays in memory, and its record keeps its magic.
  std::shared_ptr<LiveDriver> Remove(const VexoPort* port);

 private:
  struct Content {
    std::map<const void*, std::shared_ptr<LiveDriver>> drivers;  // By the driver field of the record.
    std::list<VexoPort> records;
    std::list<VexoPort> resting;
    std::list<std::shared_ptr<PortDriver>> kept;
    uintptr_t last_key = 0;
  };

  void* NewKey();
  VexoPort* PlaceRecord(const VexoPort& prototype, void* key);

  platform::Mutex mutex_;
  std::unique_ptr<Content> content_;
};

PortRegistry& Registry();

}  // namespace vexo

#endif  // VEXO_PORT_PORT_REGISTRY_H_
