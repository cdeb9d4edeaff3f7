#include "port/port_registry.h"

#include <iterator>
#include <new>
#include <utility>

#include "vexo/error.h"

namespace vexo {
namespace {

// The memory of a closed record is used again only after this many others have been closed, and is not returned to the
// system while the library is loaded. So a thread that loaded the address of a record just before another thread
// closed it finds a record without magic: not freed memory, and not somebody else's printer.
constexpr size_t kRestingRecords = 64;

}  // namespace

PortRegistry& Registry() {
  static PortRegistry registry;
  return registry;
}

// Ports that the host never closed are abandoned: this runs while the library is unloaded, when the system forbids the
// calls that would close them.
PortRegistry::~PortRegistry() {
  if (!drivers_.empty()) {
    static_cast<void>(new (std::nothrow) std::map<const void*, std::shared_ptr<LiveDriver>>(std::move(drivers_)));
  }
}

VexoPort* PortRegistry::Add(const VexoPort& prototype, std::unique_ptr<PortDriver> driver, PortLockReference lock) {
  PortDriver* const key = driver.get();
  auto live = std::make_shared<LiveDriver>();
  live->driver = std::move(driver);
  if (prototype.kind == VEXO_PORT_BLUETOOTH) {
    live->keepsake.push_back(live->driver);
  }

  const std::lock_guard<std::mutex> guard(mutex_);
  drivers_.emplace(key, live);
  try {
    PrepareRecord();
  } catch (...) {
    drivers_.erase(key);
    throw;
  }
  VexoPort& record = records_.back();
  record = prototype;
  record.driver = key;
  live->record = std::prev(records_.end());
  live->lock = std::move(lock);
  return &record;
}

void PortRegistry::PrepareRecord() {
  if (resting_.size() > kRestingRecords) {
    records_.splice(records_.end(), resting_, resting_.begin());
  } else {
    records_.emplace_back();
  }
}

std::shared_ptr<LiveDriver> PortRegistry::Use(const VexoPort* port, int32_t* error) {
  *error = VEXO_ERROR_HANDLE;
  if (port == nullptr) {
    return nullptr;
  }
  const std::lock_guard<std::mutex> guard(mutex_);
  if (port->magic != VEXO_PORT_MAGIC) {
    return nullptr;
  }
  const auto found = drivers_.find(port->driver);
  if (found == drivers_.end()) {
    *error = VEXO_ERROR_IO_HANDLE;
    return nullptr;
  }
  *error = VEXO_OK;
  return found->second;
}

std::shared_ptr<LiveDriver> PortRegistry::Remove(const VexoPort* port) {
  const std::lock_guard<std::mutex> guard(mutex_);
  const auto found = drivers_.find(port->driver);
  if (found == drivers_.end() || &*found->second->record != port) {
    return nullptr;
  }
  std::shared_ptr<LiveDriver> live = std::move(found->second);
  drivers_.erase(found);
  if (live->keepsake.empty()) {
    live->record->magic = 0;
    resting_.splice(resting_.end(), records_, live->record);
  } else {
    kept_.splice(kept_.end(), live->keepsake);
  }
  return live;
}

}  // namespace vexo
