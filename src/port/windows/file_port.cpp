#include "port/windows/file_port.h"

#include <algorithm>
#include <cstring>

#include "platform/windows/scoped_handle.h"
#include "port/transfer_pacing.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr DWORD kReadAvailableWaitMs = 100;
constexpr VexoPortTimeouts kDefaultTimeouts = {10, 5, 2000, 10, 2000, 1000};

using Use = platform::DeviceHandle::Use;

int32_t SystemError(DWORD error) { return static_cast<int32_t>(error); }

// Compatibility: when packets bring more bytes than requested, the last ones are returned and the older surplus is
// dropped. *read counts all of them.
void HandOver(const uint8_t* packets, uint32_t received, uint8_t* bytes, uint32_t length) {
  const uint32_t surplus = received > length ? received - length : 0;
  std::memcpy(bytes, packets + surplus, received - surplus);
}

}  // namespace

FilePort::FilePort(Mode mode) : DevicePort(kDefaultTimeouts), mode_(mode) {}

int32_t FilePort::ResolveDevicePath() { return VEXO_OK; }
int32_t FilePort::SetUpDevice(HANDLE /*device*/) { return VEXO_OK; }

int32_t FilePort::Open() {
  const int32_t check = CheckClosed();
  if (check != VEXO_OK) {
    return check;
  }
  const int32_t resolved = ResolveDevicePath();
  return resolved == VEXO_OK ? OpenDeviceFile() : resolved;
}

int32_t FilePort::CheckClosed() const {
  if (!configured()) {
    return VEXO_ERROR_IO_SETTING;
  }
  return is_open_ ? VEXO_ERROR_IO_ALREADY_OPEN : VEXO_OK;
}

int32_t FilePort::OpenDeviceFile() {
  const DWORD flags = mode_ == Mode::kOverlapped ? FILE_FLAG_OVERLAPPED : 0;
  platform::ScopedHandle handle(CreateFileA(device_path_, GENERIC_READ | GENERIC_WRITE, /*dwShareMode=*/0, nullptr,
                                            OPEN_EXISTING, flags, nullptr));
  if (!handle.valid()) {
    return SystemError(GetLastError());
  }
  const int32_t set_up = SetUpDevice(handle.get());
  if (set_up != VEXO_OK) {
    return set_up;
  }
  handle_.Reset(handle.Release());
  is_open_ = true;
  return VEXO_OK;
}

int32_t FilePort::Close() {
  is_open_ = false;
  handle_.Reset();
  return VEXO_OK;
}

int32_t FilePort::Abort() {
  const int32_t check = FilePort::CheckOpen();
  if (check == VEXO_OK) {
    SetAborted();
  }
  return check;
}

int32_t FilePort::CheckOpen() {
  if (!configured()) {
    return VEXO_ERROR_IO_SETTING;
  }
  return is_open_ ? VEXO_OK : VEXO_ERROR_IO_NOT_OPEN;
}

int32_t FilePort::Write(const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) {
  const int32_t check = FilePort::CheckOpen();
  if (check != VEXO_OK || length == 0) {
    return check;
  }
  SetLastError(ERROR_SUCCESS);
  OverlappedTransfer transfer(handle_);
  WritePacing pacing(timeouts(), length);
  uint32_t chunk_length = 0;
  uint32_t chunk_end = 0;
  while (*written < length && !IsAborted()) {
    if (*written == chunk_end) {
      chunk_length = std::min(chunk_size_, length - *written);
      chunk_end = *written + chunk_length;
    }
    const uint32_t wait_ms = pacing.StartTransfer();
    const TransferResult result = WriteOnce(&transfer, buffer + offset + *written, chunk_end - *written, wait_ms);
    *written += result.bytes;
    if (result.timed_out) {
      return VEXO_ERROR_IO_WRITE_TIMEOUT;
    }
    if (result.error != ERROR_SUCCESS) {
      return SystemError(result.error);
    }
    if (mode_ == Mode::kBlocking && result.bytes == 0) {
      return SystemError(GetLastError());
    }
    if (*written == chunk_end) {
      pacing.EndTransfer();
    } else if (!pacing.EndPartialTransfer(chunk_length)) {
      return VEXO_ERROR_IO_WRITE_TIMEOUT;
    }
  }
  return VEXO_OK;
}

TransferResult FilePort::WriteOnce(OverlappedTransfer* transfer, const uint8_t* bytes, uint32_t length,
                                   uint32_t wait_ms) {
  if (mode_ == Mode::kOverlapped) {
    return transfer->Write(bytes, length, wait_ms);
  }
  // Only the count of a blocking call matters: a device that took some bytes before it failed is tried again.
  TransferResult result;
  WriteFile(Use(handle_).get(), bytes, length, &result.bytes, nullptr);
  return result;
}

int32_t FilePort::Read(uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) {
  const int32_t check = FilePort::CheckOpen();
  if (check != VEXO_OK || length == 0) {
    return check;
  }
  uint8_t* const bytes = buffer + offset;
  return mode_ == Mode::kOverlapped ? ReadOverlapped(bytes, length, read) : ReadBlocking(bytes, length, read);
}

int32_t FilePort::ReadAvailable(uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
  const int32_t check = FilePort::CheckOpen();
  if (check != VEXO_OK || from == to) {
    return check;
  }
  if (from > to) {
    return VEXO_ERROR_PARAMETER;
  }
  uint8_t* const bytes = buffer + from;
  const uint32_t length = to - from;
  return mode_ == Mode::kOverlapped ? ReadAvailableOverlapped(bytes, length, read)
                                    : ReadAvailableBlocking(bytes, length, read);
}

int32_t FilePort::ReadOverlapped(uint8_t* bytes, uint32_t length, uint32_t* read) {
  // Requests are repeated only while bytes are missing, so the bytes before the last packet are shorter than one
  // packet.
  uint8_t packets[2 * kLargestPacketSize];
  const uint32_t packet_size = ReadPacketSize(length);
  uint8_t* const landing = packet_size > 0 ? packets : bytes;
  OverlappedTransfer transfer(handle_);
  ReadPacing pacing(timeouts(), length);
  int32_t outcome = VEXO_ERROR_IO_READ_TIMEOUT;
  while (pacing.StartAttempt()) {
    if (IsAborted()) {
      outcome = VEXO_OK;
      break;
    }
    const uint32_t request = packet_size > 0 ? packet_size : length - *read;
    const TransferResult result = transfer.Read(landing + *read, request, pacing.wait());
    *read += result.bytes;
    if (result.error != ERROR_SUCCESS) {
      outcome = SystemError(result.error);
      break;
    }
    if (*read >= length) {
      outcome = VEXO_OK;
      break;
    }
    if (!pacing.EndAttempt(result.bytes)) {
      break;
    }
    pacing.Pause();
  }
  if (packet_size > 0) {
    HandOver(packets, *read, bytes, length);
  }
  return outcome;
}

int32_t FilePort::ReadAvailableOverlapped(uint8_t* bytes, uint32_t length, uint32_t* read) {
  uint8_t packet[kLargestPacketSize];
  const uint32_t packet_size = ReadAvailablePacketSize(length);
  OverlappedTransfer transfer(handle_);
  const TransferResult result = packet_size > 0 ? transfer.Read(packet, packet_size, kReadAvailableWaitMs)
                                                : transfer.Read(bytes, length, kReadAvailableWaitMs);
  *read = result.bytes;
  if (packet_size > 0) {
    HandOver(packet, result.bytes, bytes, length);
  }
  return SystemError(result.error);
}

TransferResult FilePort::ReadOnce(uint8_t* bytes, uint32_t length) {
  TransferResult result;
  if (ReadFile(Use(handle_).get(), bytes, length, &result.bytes, nullptr) == 0) {
    result.error = GetLastError();
  }
  return result;
}

int32_t FilePort::ReadBlocking(uint8_t* bytes, uint32_t length, uint32_t* read) {
  const TransferResult result = ReadOnce(bytes, length);
  *read = result.bytes;
  return SystemError(result.error);
}

int32_t FilePort::ReadAvailableBlocking(uint8_t* bytes, uint32_t length, uint32_t* read) {
  return FilePort::ReadBlocking(bytes, length, read);
}

uint32_t FilePort::ReadPacketSize(uint32_t /*length*/) const { return 0; }
uint32_t FilePort::ReadAvailablePacketSize(uint32_t /*length*/) const { return 0; }

int32_t SetFlag(const uint8_t* input, uint32_t input_length, uint8_t* flag) {
  if (input == nullptr || input_length == 0) {
    return VEXO_ERROR_PARAMETER;
  }
  *flag = input[0];
  return VEXO_OK;
}

int32_t GetFlag(uint8_t flag, uint8_t* output, uint32_t output_length, uint32_t* returned) {
  if (output == nullptr || output_length == 0) {
    return VEXO_ERROR_BUFFER_TOO_SMALL;
  }
  output[0] = flag;
  *returned = 1;
  return VEXO_OK;
}

}  // namespace vexo
