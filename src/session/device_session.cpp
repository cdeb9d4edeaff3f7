#include "session/device_session.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>

#include "config/sdk_config.h"
#include "messages/error_text.h"
#include "platform/clock.h"
#include "port/bounded_text.h"
#include "port/handle_port.h"
#include "protocol/checked_printer.h"
#include "protocol/reply_reader.h"
#include "session/port_parameter.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr uint32_t kWriteAgainAfter = 100;
constexpr int kReceiveAttempts = 6;
constexpr uint32_t kReceiveSize = 4096;

bool IsUsb(const std::string& descriptor) { return descriptor.find("USB") != std::string::npos; }

// Every operation locks the session to check its state; only those on a USB port hold the lock until they end.
void UnlockUnlessUsb(std::unique_lock<platform::Mutex>* lock, const std::string& descriptor) {
  if (!IsUsb(descriptor)) {
    lock->unlock();
  }
}

void Pause(int64_t milliseconds) {
  constexpr int64_t kLongest = std::numeric_limits<uint32_t>::max();
  if (milliseconds > 0) {
    platform::SleepMs(static_cast<uint32_t>(std::min(milliseconds, kLongest)));
  }
}

// Keeps the part between the first two "#" of a device path, in upper case and in place; an empty text without a "#".
void TakeDeviceIdentifier(char* device_id) {
  const char* const first = std::strchr(device_id, '#');
  const char* const begin = first != nullptr ? first + 1 : device_id + std::strlen(device_id);
  const size_t length = std::strcspn(begin, "#");
  std::memmove(device_id, begin, length);
  device_id[length] = '\0';
  UpperCaseAscii(device_id);
}

}  // namespace

DeviceSession::~DeviceSession() {
  if (handle_ != nullptr) {
    Disconnect();
  }
}

VexoPrinterHandle* DeviceSession::ExternalHandle() {
  constexpr uintptr_t kAllBits = std::numeric_limits<uintptr_t>::max();
  return reinterpret_cast<VexoPrinterHandle*>(kAllBits);  // NOLINT(performance-no-int-to-ptr): never dereferenced.
}

int32_t DeviceSession::Connect(const std::string& model_name, const std::string& descriptor) {
  std::unique_lock<platform::Mutex> lock(mutex_);
  if (handle_ != nullptr || (has_external_handle_ && last_result_ != VEXO_OK)) {
    return last_result_;
  }
  UnlockUnlessUsb(&lock, descriptor);
  int32_t result = VEXO_OK;
  try {
    result = has_external_handle_ ? VEXO_OK : OpenPrinter(model_name, descriptor);
    if (result == VEXO_OK) {
      Remember(model_name, descriptor);
    }
  } catch (const std::bad_alloc&) {
    result = VEXO_ERROR_OUT_OF_MEMORY;
  }
  if (result == VEXO_OK) {
    return Record(result);
  }
  RecordWithMessage(result);
  if (!has_external_handle_) {
    GiveBackPrinter();
  }
  return result;
}

// Holds the tables until the handle is made: another session may release them at any time.
int32_t DeviceSession::OpenPrinter(const std::string& model_name, const std::string& descriptor) {
  SdkConfigReference config;
  const int32_t loaded = LoadSdkConfig(&config);
  if (loaded != VEXO_OK) {
    return loaded;
  }
  const ModelRecord* const model = config->FindModelByName(model_name);
  if (model == nullptr) {
    return VEXO_ERROR_UNKNOWN_MODEL;
  }
  own_handle_ = MakeModelHandle(model->number, *config);
  if (own_handle_ == nullptr) {
    return ModelHandleError();
  }
  VexoPort* port = nullptr;
  const int32_t made = ReplaceHandlePort(own_handle_.get(), descriptor.c_str(), &port);
  if (made != VEXO_OK) {
    return made;
  }
  ApplyConnectLimit(port);
  return MarkHandleOpen(own_handle_.get(), port, port->Open(port));
}

void DeviceSession::ApplyConnectLimit(VexoPort* port) const {
  VexoPortTimeouts timeouts = {};
  if (port->GetTimeouts(port, &timeouts) == VEXO_OK && timeouts.connect > connect_limit_) {
    timeouts.connect = connect_limit_;
    port->SetTimeouts(port, timeouts);
  }
}

void DeviceSession::LimitConnecting(uint32_t milliseconds) {
  connect_limit_ = milliseconds;
  if (own_handle_ != nullptr && own_handle_->port != nullptr) {
    ApplyConnectLimit(own_handle_->port);
  }
}

void DeviceSession::GiveBackPrinter() {
  connected_ = false;
  handle_ = nullptr;
  own_handle_.reset();
  ReleaseSdkConfig();
}

void DeviceSession::Remember(const std::string& model_name, const std::string& descriptor) {
  std::string model_copy = model_name;
  descriptor_ = descriptor;
  model_name_.swap(model_copy);
  handle_ = has_external_handle_ ? ExternalHandle() : own_handle_.get();
  connected_ = true;
  serial_number_[0] = '\0';
  device_identifier_[0] = '\0';
  if (IsUsb(descriptor_)) {
    ReadUsbIdentity();
  }
}

// A serial number that is too long is left out; the printer works without it.
void DeviceSession::ReadUsbIdentity() {
  GetPortUriParameter(own_handle_.get(), "sn", serial_number_, sizeof(serial_number_));
  GetPortUriParameter(own_handle_.get(), "deviceid", device_identifier_, sizeof(device_identifier_));
  TakeDeviceIdentifier(device_identifier_);
}

int32_t DeviceSession::Disconnect() {
  std::unique_lock<platform::Mutex> lock(mutex_);
  if (handle_ == ExternalHandle()) {
    handle_ = nullptr;
    connected_ = false;
    return Record(VEXO_OK);
  }
  if (handle_ == nullptr) {
    return RecordWithMessage(VEXO_ERROR_HANDLE);
  }
  UnlockUnlessUsb(&lock, descriptor_);
  const int32_t result = RecordWithMessage(CheckedPrinter(own_handle_.get()).ClosePort());
  GiveBackPrinter();
  return result;
}

int32_t DeviceSession::Send(const Bytes& bytes) {
  std::unique_lock<platform::Mutex> lock(mutex_);
  if (!HasConnection()) {
    return Record(VEXO_ERROR_HANDLE);
  }
  UnlockUnlessUsb(&lock, descriptor_);
  const CheckedPrinter printer(own_handle_.get());
  int32_t result = printer.Write(bytes);
  // Compatibility: repeats without a limit; see Send.
  while (result == VEXO_ERROR_IO_WRITE_TIMEOUT) {
    platform::SleepMs(kWriteAgainAfter);
    result = printer.Write(bytes);
  }
  return result == VEXO_OK ? Record(result) : RecordWithMessage(result);
}

int32_t DeviceSession::Receive() {
  std::unique_lock<platform::Mutex> lock(mutex_);
  if (!HasConnection()) {
    return Record(VEXO_ERROR_HANDLE);
  }
  UnlockUnlessUsb(&lock, descriptor_);
  return Record(ReceiveReply());
}

int32_t DeviceSession::ReceiveReply() {
  int32_t result = VEXO_OK;
  for (int attempt = 0; attempt < kReceiveAttempts; ++attempt) {
    uint32_t count = 0;
    result = ReceiveOnce(&count);
    if (result != VEXO_OK && result != VEXO_ERROR_IO_READ_TIMEOUT) {
      return result;
    }
    if (!received_.empty()) {
      return VEXO_OK;  // New bytes, or none after earlier ones: the reply is complete.
    }
    // Compatibility: also after the last attempt; the waiting time of a scan depends on it.
    Pause(pause_);
  }
  return result;
}

// Reserves the room first: received bytes must not be lost for lack of memory.
int32_t DeviceSession::ReceiveOnce(uint32_t* count) {
  const size_t before = received_.size();
  int32_t result = VEXO_ERROR_OUT_OF_MEMORY;
  try {
    received_.resize(before + kReceiveSize);
    result = ReadReply(own_handle_.get(), received_.data() + before, 0, kReceiveSize, count, 0, 0);
  } catch (const std::bad_alloc&) {
    *count = 0;
  }
  received_.resize(before + *count);
  return result;
}

bool DeviceSession::IsConnected() const {
  const std::lock_guard<platform::Mutex> lock(mutex_);
  return HasConnection();
}

int32_t DeviceSession::Record(int32_t result) { return last_result_ = result; }

int32_t DeviceSession::RecordWithMessage(int32_t result) {
  try {
    message_ = GetErrorText(result);
  } catch (const std::bad_alloc&) {
    message_.clear();
  }
  return Record(result);
}

}  // namespace vexo
