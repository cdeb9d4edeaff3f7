// Which of the system's USB devices a port means. Decides on texts alone: usb_enumeration gathers them.
#ifndef VEXO_PORT_USB_SELECTION_H_
#define VEXO_PORT_USB_SELECTION_H_

#include <optional>
#include <string_view>

namespace vexo {

// What the system says of a device; empty where it says nothing. Texts may be of any length and content.
struct UsbDevice {
  std::string_view hardware_id;    // "USB\VID_1A2B&PID_0001&REV_0100", upper-cased.
  std::string_view location;       // "PORT_#0001.HUB_#0002", upper-cased.
  std::string_view bus_relations;  // The print queue's device: "USBPRINT\MODEL\7&1A2B3C&0&USB001".
  std::string_view instance_id;    // "USB\VID_1A2B&PID_0001\SERIAL".
  std::string_view child_id = {};  // Device id of the first device below.
  // Device id of the device above. A disk or a gun says of itself only what any such device says; the USB identifiers
  // stand in the device above it. Not gathered of printers.
  std::string_view parent_id = {};
};

// What a device URI says of a device; empty where it says nothing.
struct UsbCriteria {
  bool any = true;  // The URI said nothing at all: the first device that qualifies is meant.
  std::string_view device_name;
  std::string_view location;
  std::string_view portnum;
  std::string_view vid;
  std::string_view pid;
};

// Whether a hardware id holds an identifier of the built-in list.
bool IsMakerDevice(std::string_view hardware_id);

enum class UsbQualification {
  kNone,   // Nobody's business here, whatever a URI says.
  kMaker,  // The maker's, or let through by the configuration.
  kGated,  // The printer whose reads can be switched off. It is taken as soon as it is met.
};

// Judges the devices of one walk over the system's interfaces.
class UsbQualifier {
 public:
  // `is_configured` tells whether the configuration lets a device with this hardware id through, and with it every
  // other. It is asked at most once in a walk, and only when a device is not the maker's.
  explicit UsbQualifier(bool (*is_configured)(std::string_view)) : is_configured_(is_configured) {}

  UsbQualification Judge(const UsbDevice& device);

  // A device that does not qualify may still be a printer of this system, which its service tells ("usbprint", in any
  // letter case, or a part of it). One is enough to know of: until then the service of each is to be read and noted.
  bool wants_service() const { return !met_print_service_; }
  void NoteService(std::string_view service);

 private:
  bool IsConfigured(const UsbDevice& device);

  bool (*const is_configured_)(std::string_view);
  std::optional<bool> configured_;
  bool met_print_service_ = false;
};

// Whether a URI means a device that qualifies.
bool MatchesUsbCriteria(const UsbDevice& device, const UsbCriteria& criteria);

// The part of an instance id after its last "\"; nothing without one.
std::optional<std::string_view> UsbSerial(std::string_view instance_id);

}  // namespace vexo

#endif  // VEXO_PORT_USB_SELECTION_H_
