// The state that all ports to devices share: URI, time limits and abort flag.
#ifndef VEXO_PORT_DEVICE_PORT_H_
#define VEXO_PORT_DEVICE_PORT_H_

#include <atomic>
#include <cstdint>

#include "port/device_uri.h"
#include "port/port_driver.h"
#include "port/port_lock.h"

namespace vexo {

class DevicePort : public PortDriver {
 public:
  int32_t GetUri(char* buffer, uint32_t size, uint32_t* length) override;
  int32_t SetTimeouts(const VexoPortTimeouts& timeouts) override;
  int32_t GetTimeouts(VexoPortTimeouts* timeouts) override;

  // Returns VEXO_ERROR_NOT_IMPLEMENTED unless the kind of port overrides it.
  int32_t Control(int32_t code, const uint8_t* input, uint32_t input_length, uint8_t* output, uint32_t output_length,
                  uint32_t* returned) override;

 protected:
  explicit DevicePort(const VexoPortTimeouts& timeouts) : timeouts_(timeouts) {}

  // Completes a successful Configure.
  void SetConfigured(const DeviceUri& uri);
  bool configured() const { return configured_; }

  // The URI, in a buffer of 256 bytes: opening a port may append parameters.
  char* uri() { return uri_; }

  const VexoPortTimeouts& timeouts() const { return timeouts_; }

  // The abort flag: set on any thread, checked between the steps of a transfer.
  //
  // Compatibility: an aborted transfer returns VEXO_OK with the count so far.
  void SetAborted() { abort_.Set(); }
  bool IsAborted() const { return abort_.IsSet(); }

 private:
  char uri_[kUriBufferSize] = {};
  std::atomic<bool> configured_{false};
  VexoPortTimeouts timeouts_;
  AbortFlag abort_;
};

}  // namespace vexo

#endif  // VEXO_PORT_DEVICE_PORT_H_
