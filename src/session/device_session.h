// A device session: connects to one printer by descriptor, queries it and disconnects.
#ifndef VEXO_SESSION_DEVICE_SESSION_H_
#define VEXO_SESSION_DEVICE_SESSION_H_

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "platform/mutex.h"
#include "protocol/bytes.h"
#include "session/model_handle.h"
#include "vexo/printer.h"

namespace vexo {

// Owns its printer handle and the port in it. Several threads may use a session on a USB port: each operation holds the
// session's lock until it ends. On any other port, one thread at a time may use it.
//
// Reports a lack of memory as VEXO_ERROR_OUT_OF_MEMORY, never as an exception.
class DeviceSession {
 public:
  DeviceSession() = default;
  DeviceSession(const DeviceSession&) = delete;
  DeviceSession& operator=(const DeviceSession&) = delete;
  ~DeviceSession();  // Disconnects.

  // Opens the port of a printer whose model name is in the configuration. Returns VEXO_OK, VEXO_ERROR_UNKNOWN_MODEL,
  // VEXO_ERROR_OUT_OF_MEMORY, or the code of the port; a failure releases everything. A session that already has a
  // handle is left unchanged and returns its last result.
  int32_t Connect(const std::string& model_name, const std::string& descriptor);

  // Returns VEXO_OK, VEXO_ERROR_HANDLE (no handle, or a damaged one), VEXO_ERROR_IO_NOT_OPEN (someone else closed the
  // port), or the code of the port's Close. Releases the handle in any case.
  int32_t Disconnect();

  // Writes the bytes. Returns VEXO_OK, VEXO_ERROR_HANDLE when not connected, or the code of the port.
  //
  // Compatibility: repeats a write that times out without a limit. A printer without paper may accept nothing for
  // hours, and hosts expect the data to be printed then.
  int32_t Send(const Bytes& bytes);

  // Appends what the printer sends to received(): performs up to six receives, pausing after each empty one, until one
  // brings data. When received() already holds bytes, a single empty receive means that the reply is complete. Returns
  // VEXO_OK, VEXO_ERROR_HANDLE, VEXO_ERROR_IO_NOT_OPEN or VEXO_ERROR_OUT_OF_MEMORY.
  int32_t Receive();

  bool IsConnected() const;

  // Compatibility: with an external handle the session makes none of its own. Unless the last result is a failure,
  // Connect regards it as connected by someone else and marks it with ExternalHandle(), a pointer with all bits set
  // that is never dereferenced. Send and Receive then have no printer (VEXO_ERROR_HANDLE), and Disconnect only removes
  // the mark.
  void set_external_handle(bool external) { has_external_handle_ = external; }
  static VexoPrinterHandle* ExternalHandle();

  // Limits each connect attempt, if the port's own limit is longer. Applies at once, also to a connected session whose
  // port has to reconnect.
  void LimitConnecting(uint32_t milliseconds);

  // The pause after each empty receive, in milliseconds.
  void set_pause(int64_t milliseconds) { pause_ = milliseconds; }

  VexoPrinterHandle* handle() const { return handle_; }
  int32_t last_result() const { return last_result_; }

  // The message for the latest failure to connect or send, or for the latest Disconnect, in the user's language and
  // code page 936. Empty if there is none or memory ran out.
  const std::string& message() const { return message_; }

  const Bytes& received() const { return received_; }

  // The arguments of the latest successful Connect.
  const std::string& model_name() const { return model_name_; }
  const std::string& descriptor() const { return descriptor_; }

  // The printer's identity as given by the URI of a USB port. Empty when the URI does not contain it, or when it is too
  // long for these fields.
  const char* serial_number() const { return serial_number_; }
  const char* device_identifier() const { return device_identifier_; }

 private:
  bool HasConnection() const { return handle_ != nullptr && connected_; }
  int32_t OpenPrinter(const std::string& model_name, const std::string& descriptor);
  void ApplyConnectLimit(VexoPort* port) const;
  void GiveBackPrinter();
  void Remember(const std::string& model_name, const std::string& descriptor);
  void ReadUsbIdentity();
  int32_t ReceiveOnce(uint32_t* count);
  int32_t ReceiveReply();
  int32_t Record(int32_t result);
  int32_t RecordWithMessage(int32_t result);

  static constexpr int64_t kDefaultPause = 20;
  static constexpr size_t kSerialNumberSize = 64;
  static constexpr size_t kDeviceIdSize = 32;

  mutable platform::Mutex mutex_;
  std::string model_name_;
  std::string descriptor_;
  std::unique_ptr<ModelHandle> own_handle_;
  VexoPrinterHandle* handle_ = nullptr;  // own_handle_ or ExternalHandle().
  bool has_external_handle_ = false;
  bool connected_ = false;
  int32_t last_result_ = 0;
  std::string message_;
  Bytes received_;
  int64_t pause_ = kDefaultPause;
  uint32_t connect_limit_ = std::numeric_limits<uint32_t>::max();
  char serial_number_[kSerialNumberSize] = {};
  char device_identifier_[kDeviceIdSize] = {};
};

}  // namespace vexo

#endif  // VEXO_SESSION_DEVICE_SESSION_H_
