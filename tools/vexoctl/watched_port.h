#ifndef VEXOCTL_WATCHED_PORT_H_
#define VEXOCTL_WATCHED_PORT_H_

#include <cstdint>
#include <mutex>

#include "vexo/printer.h"

namespace vexoctl {

// A port object of the tool's own in front of the library's, put into a printer handle for as long as it exists. It
// adds two things that a command which listens for a long time needs:
//
// - The loss of the connection becomes news (news.h). The library's job monitor only asks for what has arrived, to
//   which a printer that has closed the connection looks like one with nothing to say.
// - One operation at a time. The monitor reads on a thread of its own while the main thread writes, and a write may
//   exchange the connection for a new one.
//
// Once the connection is lost, nothing is read until a write has succeeded, for which the library's port connects
// again.
class WatchedPort {
 public:
  // The handle holds an open port of the library, which is not used otherwise meanwhile. Throws a Failure.
  explicit WatchedPort(VexoPrinterHandle* handle);
  ~WatchedPort();
  WatchedPort(const WatchedPort&) = delete;
  WatchedPort& operator=(const WatchedPort&) = delete;

 private:
  // The entries of the port object: those which the job monitor and the sending of a file use.
  static int32_t Write(VexoPort* port, const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written);
  static int32_t ReadAvailable(VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read);

  bool IsSocket() const;
  void ShortenReads();
  int32_t ReadFromSocket(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read);
  void NoteLoss(int32_t code);

  VexoPrinterHandle* const handle_;
  VexoPort* const port_;  // The library's.
  VexoPort entries_ = {};
  std::mutex mutex_;
  int32_t loss_ = 0;  // Why the connection is lost; 0 when it is not.
};

}  // namespace vexoctl

#endif  // VEXOCTL_WATCHED_PORT_H_
