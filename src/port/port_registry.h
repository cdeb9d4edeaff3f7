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

#include "port/port_driver.h"
#include "port/port_lock.h"
#include "vexo/printer.h"

namespace vexo {

// A driver with its share in the port lock. The share is given back last: the driver may read its abort flag until it
// is gone.
struct LiveDriver {
  PortLockReference lock;
  std::shared_ptr<PortDriver> driver;
  std::list<VexoPort>::iterator record;
  std::list<std::shared_ptr<PortDriver>> keepsake;  // See PortRegistry::Remove.
};

// Safe to use from any thread.
class PortRegistry {
 public:
  PortRegistry() = default;
  PortRegistry(const PortRegistry&) = delete;
  PortRegistry& operator=(const PortRegistry&) = delete;
  ~PortRegistry();

  // A new port object: a copy of `prototype` with the driver filled in. Throws std::bad_alloc, nothing is left then.
  VexoPort* Add(const VexoPort& prototype, std::unique_ptr<PortDriver> driver, PortLockReference lock);

  // The driver for one operation on `port`, kept alive by the pointer: another thread may close the port meanwhile.
  // Null with *error -6 (no object, wrong magic) or -308 (no such driver). A copy of a record reaches the same driver.
  std::shared_ptr<LiveDriver> Use(const VexoPort* port, int32_t* error);

  // Takes a port object out and gives what it owned; its record loses its magic. Null: the object was not made here,
  // or was taken out before. The driver of a Bluetooth port is kept in memory for good, and its record keeps its magic:
  // the system may still be completing requests of the socket.
  std::shared_ptr<LiveDriver> Remove(const VexoPort* port);

 private:
  void PrepareRecord();

  std::mutex mutex_;
  std::map<const void*, std::shared_ptr<LiveDriver>> drivers_;  // By the driver field of the record.
  std::list<VexoPort> records_;
  std::list<VexoPort> resting_;
  std::list<std::shared_ptr<PortDriver>> kept_;
};

PortRegistry& Registry();

}  // namespace vexo

#endif  // VEXO_PORT_PORT_REGISTRY_H_
