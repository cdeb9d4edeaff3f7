#include "port/port_object.h"

#include <utility>

#include "port/port_registry.h"
#include "port/shared_field.h"
#include "vexo/error.h"

namespace vexo {
namespace {

template <typename Operation>
int32_t WithDriver(const VexoPort* port, Operation operation) {
  int32_t error = VEXO_OK;
  const std::shared_ptr<LiveDriver> live = Registry().Use(port, &error);
  return live != nullptr ? operation(**live) : error;
}

// An optional output count; 0 until the driver sets it.
class OutCount {
 public:
  explicit OutCount(uint32_t* wanted) : count_(wanted != nullptr ? wanted : &unwanted_) { *count_ = 0; }
  OutCount(const OutCount&) = delete;
  OutCount& operator=(const OutCount&) = delete;

  uint32_t* get() { return count_; }

 private:
  uint32_t unwanted_ = 0;
  uint32_t* count_;
};

// The twelve entries. Each checks the object and its arguments, then calls the driver's operation of the same name.

int32_t PortConfigure(VexoPort* port, const char* uri) {
  return WithDriver(port, [=](PortDriver& driver) -> int32_t {
    return uri != nullptr ? driver.Configure(uri) : VEXO_ERROR_IO_SETTING;
  });
}

int32_t PortGetUri(VexoPort* port, char* buffer, uint32_t size, uint32_t* length) {
  OutCount count(length);
  return WithDriver(port, [&](PortDriver& driver) { return driver.GetUri(buffer, size, count.get()); });
}

int32_t PortOpen(VexoPort* port) {
  return WithDriver(port, [](PortDriver& driver) { return driver.Open(); });
}

int32_t PortClose(VexoPort* port) {
  return WithDriver(port, [](PortDriver& driver) { return driver.Close(); });
}

int32_t PortAbort(VexoPort* port) {
  return WithDriver(port, [](PortDriver& driver) { return driver.Abort(); });
}

int32_t PortCheckOpen(VexoPort* port) {
  return WithDriver(port, [](PortDriver& driver) { return driver.CheckOpen(); });
}

int32_t PortSetTimeouts(VexoPort* port, VexoPortTimeouts timeouts) {
  return WithDriver(port, [&](PortDriver& driver) { return driver.SetTimeouts(timeouts); });
}

int32_t PortGetTimeouts(VexoPort* port, VexoPortTimeouts* timeouts) {
  return WithDriver(port, [=](PortDriver& driver) -> int32_t {
    return timeouts != nullptr ? driver.GetTimeouts(timeouts) : VEXO_ERROR_PARAMETER;
  });
}

int32_t PortWrite(VexoPort* port, const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) {
  OutCount count(written);
  return WithDriver(port, [&](PortDriver& driver) -> int32_t {
    const bool no_buffer = buffer == nullptr && length > 0;
    return no_buffer ? VEXO_ERROR_PARAMETER : driver.Write(buffer, offset, length, count.get());
  });
}

int32_t PortRead(VexoPort* port, uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) {
  OutCount count(read);
  return WithDriver(port, [&](PortDriver& driver) -> int32_t {
    const bool no_buffer = buffer == nullptr && length > 0;
    return no_buffer ? VEXO_ERROR_PARAMETER : driver.Read(buffer, offset, length, count.get());
  });
}

int32_t PortReadAvailable(VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
  OutCount count(read);
  return WithDriver(port, [&](PortDriver& driver) -> int32_t {
    const bool no_buffer = buffer == nullptr && from != to;
    return no_buffer ? VEXO_ERROR_PARAMETER : driver.ReadAvailable(buffer, from, to, count.get());
  });
}

int32_t PortControl(VexoPort* port, int32_t code, void* /*reserved*/, const uint8_t* input, uint32_t input_length,
                    uint8_t* output, uint32_t output_length, uint32_t* returned) {
  OutCount count(returned);
  return WithDriver(port, [&](PortDriver& driver) {
    return driver.Control(code, input, input_length, output, output_length, count.get());
  });
}

VexoPort NewRecord(uint32_t kind) {
  VexoPort record = {};
  record.magic = VEXO_PORT_MAGIC;
  record.Configure = PortConfigure;
  record.GetUri = PortGetUri;
  record.Open = PortOpen;
  record.Close = PortClose;
  record.Abort = PortAbort;
  record.CheckOpen = PortCheckOpen;
  record.SetTimeouts = PortSetTimeouts;
  record.GetTimeouts = PortGetTimeouts;
  record.Write = PortWrite;
  record.Read = PortRead;
  record.ReadAvailable = PortReadAvailable;
  record.Control = PortControl;
  record.kind = kind;
  return record;
}

}  // namespace

VexoPort* MakePortObject(uint32_t kind, std::unique_ptr<PortDriver> driver, PortLockReference lock) {
  return Registry().Add(NewRecord(kind), std::move(driver), std::move(lock));
}

int32_t ClosePort(VexoPort* port) {
  if (port == nullptr || LoadField(port->magic) != VEXO_PORT_MAGIC) {
    return VEXO_ERROR_HANDLE;
  }
  const bool bluetooth = LoadField(port->kind) == VEXO_PORT_BLUETOOTH;
  const std::shared_ptr<LiveDriver> ours = Registry().Remove(port);
  if (ours != nullptr) {
    const bool in_use = ours.use_count() > 1;
    if (in_use) {
      (*ours)->Abort();  // Another thread is transferring; end its transfer.
      (*ours)->Close();
    }
  } else if (port->Close != nullptr) {
    port->Close(port);
  }
  return bluetooth ? VEXO_ERROR_NOT_SUPPORTED_PRINTER : VEXO_OK;
}

int32_t OpenDeviceOfClass(VexoPort* port, uint32_t first_class, uint32_t class_count) {
  return WithDriver(port, [=](PortDriver& driver) { return driver.OpenDeviceOfClass(first_class, class_count); });
}

}  // namespace vexo
