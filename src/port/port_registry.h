// The registry of all port objects that this library made. It knows which objects are ours and whether their drivers
// still exist; the records cannot, because hosts may copy and overwrite them.
#ifndef VEXO_PORT_PORT_REGISTRY_H_
#define VEXO_PORT_PORT_REGISTRY_H_

#include <cstdint>
#include <list>
#include <map>
#include <memory>

#include "platform/mutex.h"
#include "port/port_driver.h"
#include "port/port_lock.h"
#include "vexo/printer.h"

namespace vexo {

// A driver and its reference to the port lock. The last owner closes the device: the thread that closes the port, or
// another one whose operation is still under way.
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

  PortLockReference lock_;  // Released last: the driver may check its abort flag until it is destroyed.
  std::shared_ptr<PortDriver> driver_;
  std::list<VexoPort>::iterator record_;
  std::list<std::shared_ptr<PortDriver>> leaked_driver_;  // Bluetooth ports only; see PortRegistry::Remove.
};

// Thread-safe.
class PortRegistry {
 public:
  PortRegistry() : content_(std::make_unique<Content>()) {}
  PortRegistry(const PortRegistry&) = delete;
  PortRegistry& operator=(const PortRegistry&) = delete;
  ~PortRegistry();

  // Returns a new port object: a copy of `prototype` with its driver set. All prototypes must have the same operations.
  // Throws std::bad_alloc, leaving nothing behind.
  VexoPort* Add(const VexoPort& prototype, std::unique_ptr<PortDriver> driver, PortLockReference lock);

  // Returns the driver for one operation on `port` and keeps it alive, since another thread may close the port
  // meanwhile. Null with *error VEXO_ERROR_HANDLE (no object, wrong magic) or VEXO_ERROR_IO_HANDLE (no such driver). A
  // copy of a record reaches the same driver.
  std::shared_ptr<LiveDriver> Use(const VexoPort* port, int32_t* error);

  // Removes a port object, clears the magic of its record and returns its driver. Returns null when the object was not
  // made here or is already removed.
  //
  // Compatibility: the driver of a Bluetooth port is leaked, and its record keeps its magic.
  std::shared_ptr<LiveDriver> Remove(const VexoPort* port);

 private:
  struct Content {
    std::map<const void*, std::shared_ptr<LiveDriver>> drivers;  // Keyed by the driver field of the record.
    std::list<VexoPort> records;
    std::list<VexoPort> retired;
    std::list<std::shared_ptr<PortDriver>> leaked;
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
