#include "port/port_registry.h"

#include <iterator>
#include <mutex>
#include <utility>

#include "port/shared_field.h"
#include "vexo/error.h"

namespace vexo {
namespace {

// The memory of a closed record is reused only after this many others have been closed, and not freed while the library
// is loaded. A thread that loaded the address of a record just before it was closed therefore finds a record without
// magic, not freed memory and not another printer.
constexpr size_t kRetiredRecords = 64;

// Constructed when the library is loaded, so that closing a port never needs memory.
PortRegistry g_registry;

}  // namespace

PortRegistry& Registry() { return g_registry; }

LiveDriver::LiveDriver(std::unique_ptr<PortDriver> driver, PortLockReference lock)
    : lock_(std::move(lock)), driver_(std::move(driver)) {}

LiveDriver::~LiveDriver() { driver_->Close(); }

// Leaks the ports that the host did not close: this runs while the library is unloaded, when the system forbids the
// calls that would close them.
PortRegistry::~PortRegistry() {
  static Content* abandoned = nullptr;
  if (!content_->drivers.empty() || !content_->leaked.empty()) {
    abandoned = content_.release();
  }
  static_cast<void>(abandoned);
}

VexoPort* PortRegistry::Add(const VexoPort& prototype, std::unique_ptr<PortDriver> driver, PortLockReference lock) {
  auto live = std::make_shared<LiveDriver>(std::move(driver), std::move(lock));
  if (prototype.kind == VEXO_PORT_BLUETOOTH) {
    live->leaked_driver_.push_back(live->driver_);
  }
  const std::lock_guard<platform::Mutex> guard(mutex_);
  void* const key = NewKey();
  const auto added = content_->drivers.emplace(key, live).first;
  try {
    VexoPort* const record = PlaceRecord(prototype, key);
    live->record_ = std::prev(content_->records.end());
    return record;
  } catch (...) {
    content_->drivers.erase(added);
    throw;
  }
}

// A counter instead of the driver's address, which a later driver may reuse: a copy of a closed record must not reach
// another printer.
void* PortRegistry::NewKey() {
  return reinterpret_cast<void*>(++content_->last_key);  // NOLINT(performance-no-int-to-ptr): never dereferenced.
}

// A reused record already has the operations. Its magic is stored last: until then a thread that still has its address
// does not regard it as a port object.
VexoPort* PortRegistry::PlaceRecord(const VexoPort& prototype, void* key) {
  if (content_->retired.size() > kRetiredRecords) {
    content_->records.splice(content_->records.end(), content_->retired, content_->retired.begin());
  } else {
    content_->records.push_back(prototype);
    content_->records.back().magic = 0;
  }
  VexoPort* const record = &content_->records.back();
  record->driver = key;
  StoreField(&record->kind, prototype.kind);
  StoreField(&record->magic, prototype.magic);
  return record;
}

std::shared_ptr<LiveDriver> PortRegistry::Use(const VexoPort* port, int32_t* error) {
  *error = VEXO_ERROR_HANDLE;
  if (port == nullptr) {
    return nullptr;
  }
  const std::lock_guard<platform::Mutex> guard(mutex_);
  if (port->magic != VEXO_PORT_MAGIC) {
    return nullptr;
  }
  const auto found = content_->drivers.find(port->driver);
  if (found == content_->drivers.end()) {
    *error = VEXO_ERROR_IO_HANDLE;
    return nullptr;
  }
  *error = VEXO_OK;
  return found->second;
}

std::shared_ptr<LiveDriver> PortRegistry::Remove(const VexoPort* port) {
  const std::lock_guard<platform::Mutex> guard(mutex_);
  const auto found = content_->drivers.find(port->driver);
  if (found == content_->drivers.end() || &*found->second->record_ != port) {
    return nullptr;
  }
  std::shared_ptr<LiveDriver> live = std::move(found->second);
  content_->drivers.erase(found);
  if (live->leaked_driver_.empty()) {
    StoreField(&live->record_->magic, 0U);
    content_->retired.splice(content_->retired.end(), content_->records, live->record_);
  } else {
    content_->leaked.splice(content_->leaked.end(), live->leaked_driver_);
  }
  return live;
}

}  // namespace vexo
