// A short conversation with one printer: connected by descriptor, asked, and left again.
#ifndef VEXO_SESSION_DEVICE_SESSION_H_
#define VEXO_SESSION_DEVICE_SESSION_H_

#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <string>

#include "platform/mutex.h"
#include "protocol/bytes.h"
#include "session/model_handle.h"
#include "vexo/printer.h"

namespace vexo {

// Owns its printer handle and the port in it. On a USB port the operations may come from several threads: each holds
// the session's lock to its end. A session on any other port belongs to one thread at a time.
//
// Lack of memory is a code (-9), never an exception.
class DeviceSession {
 public:
  DeviceSession() = default;
  DeviceSession(const DeviceSession&) = delete;
  DeviceSession& operator=(const DeviceSession&) = delete;
  ~DeviceSession();  // Disconnects.

  // Opens the port of a printer whose model the configuration knows by this name. 0; -8: no such model; -9; else the
  // code of the port. After a failure nothing is held. A session that has a handle stays as it is and gives its last
  // result.
  int32_t Connect(const std::string& model_name, const std::string& descriptor);

  // 0; -6: there is no handle, or it is damaged; -309: its port was closed by others; else the code of closing the
  // port. The handle is gone in any case.
  int32_t Disconnect();

  // Writes the bytes, again and again while the printer takes none in time (-322): a printer without paper may need
  // hours. 0; -6: not connected; else the code of the port.
  int32_t Send(const Bytes& bytes);

  // Appends what the printer sends to received(): one receive that brings something, or six, with a pause after each,
  // that bring nothing; with bytes there already, nothing new means that the reply is complete. 0; -6; -309; -9.
  int32_t Receive();

  bool IsConnected() const;

  // The session makes no handle of its own: Connect takes it as connected by somebody else, unless its last result
  // says otherwise, and marks it with ExternalHandle(). Send and Receive have no printer then (-6), and Disconnect only
  // takes the mark away.
  void set_external_handle(bool external) { has_external_handle_ = external; }
  static VexoPrinterHandle* ExternalHandle();

  // How long each attempt to connect may take, if that is less than the port allows by itself: from now on, also while
  // the session is connected and the port has to connect again.
  void LimitConnecting(uint32_t milliseconds);

  // After each receive that brings nothing, in milliseconds.
  void set_pause(int64_t milliseconds) { pause_ = milliseconds; }

  VexoPrinterHandle* handle() const { return handle_; }
  int32_t last_result() const { return last_result_; }

  // Words in the user's language, in code page 936, for the latest failure to connect or to send, or for how
  // disconnecting went. Empty: none so far, or no memory for them.
  const std::string& message() const { return message_; }

  const Bytes& received() const { return received_; }
  void ClearReceived() { received_.clear(); }

  // Of the latest successful Connect.
  const std::string& model_name() const { return model_name_; }
  const std::string& descriptor() const { return descriptor_; }

  // What the USB port's URI tells of the printer; empty when it does not, or when it is longer than this layout allows.
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
  VexoPrinterHandle* handle_ = nullptr;  // own_handle_ or ExternalHandle(), which leads nowhere.
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
