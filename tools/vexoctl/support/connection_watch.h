#ifndef VEXOCTL_SUPPORT_CONNECTION_WATCH_H_
#define VEXOCTL_SUPPORT_CONNECTION_WATCH_H_

#include <cstdint>
#include <mutex>

#include "vexo/error.h"
#include "vexo/printer.h"

namespace vexoctl {

// Notices the loss of a connection: a port object in front of the library's, in a printer handle for as long as it
// exists. Commands that listen for a long time need what it adds:
//
// - The loss of the connection becomes an event (events.h). The job monitor reads only what has arrived, and a printer
//   that has closed the connection looks to it like one that sends nothing.
// - One operation at a time. The monitor reads on its own thread while the main thread writes, and a write may replace
//   the connection.
//
// After a loss nothing is read until a write has succeeded; the library's port reconnects for that.
class ConnectionWatch {
 public:
  // The handle holds an open port of the library, which must not be used otherwise meanwhile. Throws a Failure.
  explicit ConnectionWatch(VexoPrinterHandle* handle);
  ~ConnectionWatch();
  ConnectionWatch(const ConnectionWatch&) = delete;
  ConnectionWatch& operator=(const ConnectionWatch&) = delete;

 private:
  // The operations that the job monitor and the sending of a file use.
  static int32_t Write(VexoPort* port, const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written);
  static int32_t ReadAvailable(VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read);

  bool IsSocket() const;
  void ShortenReads();
  int32_t ReadFromSocket(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read);
  void PostLoss(int32_t code);

  VexoPrinterHandle* const handle_;
  VexoPort* const port_;  // The library's.
  VexoPort operations_ = {};
  std::mutex mutex_;
  int32_t loss_ = VEXO_OK;  // Why the connection is lost; VEXO_OK while it is not.
};

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_CONNECTION_WATCH_H_
