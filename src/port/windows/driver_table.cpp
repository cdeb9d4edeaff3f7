// The drivers of the Windows build.

#include "port/socket/bluetooth_port.h"

#include <new>

#include "port/buffer_port.h"
#include "port/socket/tcp_port.h"
#include "port/windows/parallel_port.h"
#include "port/windows/serial_port.h"
#include "port/windows/usb_port.h"

namespace vexo {
namespace {

template <typename Driver>
std::unique_ptr<PortDriver> Make() {
  return std::unique_ptr<PortDriver>(new (std::nothrow) Driver);
}

}  // namespace

std::unique_ptr<PortDriver> MakePortDriver(int32_t kind, bool* known) {
  *known = true;
  switch (kind) {
    case VEXO_PORT_SERIAL:
      return Make<SerialPort>();
    case VEXO_PORT_PARALLEL:
      return Make<ParallelPort>();
    case VEXO_PORT_USB:
      return Make<UsbPort>();
    case VEXO_PORT_NET:
      return Make<TcpPort>();
    case VEXO_PORT_BLUETOOTH:
      return Make<BluetoothPort>();
    case VEXO_PORT_BUFFER:
      return Make<BufferPort>();
    // Compatibility: FILE is a known kind without a driver; hosts get VEXO_ERROR_NOT_SUPPORTED_PRINTER.
    default:
      *known = false;
      return nullptr;
  }
}

}  // namespace vexo
