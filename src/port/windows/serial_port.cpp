#include "port/windows/serial_port.h"

#include "port/bounded_text.h"
#include "vexo/error.h"

namespace vexo {
namespace {

// The namespace that also contains COM10 and above.
constexpr char kDevicePrefix[] = "\\\\.\\";

// Without a hardware handshake the DTR and RTS controls stay as the system set them.
void SetHandshake(uint32_t flow_control, DCB* line) {
  const bool dtr_dsr = (flow_control & kFlowDtrDsr) != 0;
  const bool rts_cts = (flow_control & kFlowRtsCts) != 0;
  const bool xon_xoff = (flow_control & kFlowXonXoff) != 0;
  line->fOutX = xon_xoff ? 1 : 0;
  line->fInX = xon_xoff ? 1 : 0;
  line->fOutxDsrFlow = dtr_dsr ? 1 : 0;
  line->fOutxCtsFlow = rts_cts ? 1 : 0;
  if (dtr_dsr || rts_cts) {
    line->fDtrControl = dtr_dsr ? DTR_CONTROL_ENABLE : DTR_CONTROL_DISABLE;
    line->fRtsControl = rts_cts ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_DISABLE;
  }
}

}  // namespace

int32_t SerialPort::Configure(const char* uri) {
  DeviceUri parsed;
  int32_t result = ParseDeviceUri(&parsed, uri);
  if (result == VEXO_OK) {
    result = ReadSerialSettings(parsed, &settings_);
  }
  if (result != VEXO_OK) {
    return result;
  }
  BoundedText path(device_path_, sizeof(device_path_));
  path.Append(kDevicePrefix);
  path.Append(parsed.device);
  SetConfigured(parsed);
  return VEXO_OK;
}

int32_t SerialPort::SetTimeouts(const VexoPortTimeouts& timeouts) {
  auto_write_timeout_ = false;
  return FilePort::SetTimeouts(timeouts);
}

int32_t SerialPort::Open() {
  if (configured() && auto_write_timeout_ && CheckOpen() == VEXO_ERROR_IO_NOT_OPEN) {
    VexoPortTimeouts derived = timeouts();
    derived.writeConstant = SerialWriteConstant(chunk_size(), settings_.baud_rate);
    FilePort::SetTimeouts(derived);
  }
  return FilePort::Open();
}

int32_t SerialPort::SetUpDevice(HANDLE device) {
  int32_t result = SetUpLine(device);
  if (result == VEXO_OK) {
    result = SetUpTimeouts(device);
  }
  if (result != VEXO_OK) {
    return result;
  }
  if (SetupComm(device, chunk_size(), chunk_size()) == 0) {
    return VEXO_ERROR_IO_SET_ATTRIBUTES;
  }
  return PurgeComm(device, PURGE_TXCLEAR | PURGE_RXCLEAR) != 0 ? VEXO_OK : static_cast<int32_t>(GetLastError());
}

int32_t SerialPort::SetUpLine(HANDLE device) const {
  DCB line = {};
  line.DCBlength = sizeof(line);
  if (GetCommState(device, &line) == 0) {
    return VEXO_ERROR_IO_GET_ATTRIBUTES;
  }
  FillLine(&line);
  return SetCommState(device, &line) != 0 ? VEXO_OK : VEXO_ERROR_IO_SET_ATTRIBUTES;
}

void SerialPort::FillLine(DCB* line) const {
  line->BaudRate = settings_.baud_rate;
  line->ByteSize = settings_.byte_size;
  line->Parity = settings_.parity;
  line->StopBits = settings_.stop_bits;
  SetHandshake(settings_.flow_control, line);
}

int32_t SerialPort::SetUpTimeouts(HANDLE device) const {
  COMMTIMEOUTS limits = {};
  if (GetCommTimeouts(device, &limits) == 0) {
    return VEXO_ERROR_IO_GET_ATTRIBUTES;
  }
  limits.ReadIntervalTimeout = timeouts().readInterval;
  limits.ReadTotalTimeoutMultiplier = timeouts().readMultiplier;
  limits.ReadTotalTimeoutConstant = timeouts().readConstant;
  limits.WriteTotalTimeoutMultiplier = timeouts().writeMultiplier;
  limits.WriteTotalTimeoutConstant = timeouts().writeConstant;
  return SetCommTimeouts(device, &limits) != 0 ? VEXO_OK : VEXO_ERROR_IO_SET_ATTRIBUTES;
}

}  // namespace vexo
