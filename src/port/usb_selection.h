// Decides which of the system's USB devices a port means. Works on texts alone; usb_enumeration gathers them.
#ifndef VEXO_PORT_USB_SELECTION_H_
#define VEXO_PORT_USB_SELECTION_H_

#include <optional>
#include <string_view>

namespace vexo {

// The texts that describe a device; empty where the system has none. They may have any length and content.
struct UsbDevice {
  std::string_view hardware_id;    // "USB\VID_1A2B&PID_0001&REV_0100", upper-cased.
  std::string_view location;       // "PORT_#0001.HUB_#0002", upper-cased.
  std::string_view bus_relations;  // Device of the print queue: "USBPRINT\MODEL\7&1A2B3C&0&USB001".
  std::string_view instance_id;    // "USB\VID_1A2B&PID_0001\SERIAL".
  std::string_view child_id = {};  // Device id of the first child device.
  // Device id of the parent device, which carries the USB identifiers of a disk or a scanner gun. Not gathered for
  // printers.
  std::string_view parent_id = {};
};

// The criteria in a device URI; empty where it gives none.
struct UsbCriteria {
  bool any = true;  // No criteria at all: the first device that qualifies.
  std::string_view device_name;
  std::string_view location;
  std::string_view portnum;
  std::string_view vid;
  std::string_view pid;
};

// Whether a hardware id contains an identifier of the built-in list.
bool IsMakerDevice(std::string_view hardware_id);

enum class UsbQualification {
  kNone,   // Not one of our printers; never selected.
  kMaker,  // One of the maker's, or qualified by the configuration.
  kGated,  // The printer whose reads can be switched off. Selected as soon as it is met.
};

// Decides which devices of one enumeration qualify.
class UsbQualifier {
 public:
  // `is_configured` tells whether the configuration qualifies a hardware id, and with it all others. It is called at
  // most once per enumeration, and only for a device that is not the maker's.
  explicit UsbQualifier(bool (*is_configured)(std::string_view)) : is_configured_(is_configured) {}

  UsbQualification Qualify(const UsbDevice& device);

  // Compatibility: of devices that do not qualify, the service is read until one has turned out to be a printer of the
  // system ("usbprint" in any letter case, or a part of it). Nothing depends on it.
  bool wants_service() const { return !met_print_service_; }
  void NoteService(std::string_view service);

 private:
  bool IsConfigured(const UsbDevice& device);

  bool (*const is_configured_)(std::string_view);
  std::optional<bool> configured_;
  bool met_print_service_ = false;
};

// Whether a qualified device meets the criteria.
bool MatchesUsbCriteria(const UsbDevice& device, const UsbCriteria& criteria);

// The part of an instance id after its last "\", if it has one.
std::optional<std::string_view> UsbSerial(std::string_view instance_id);

}  // namespace vexo

#endif  // VEXO_PORT_USB_SELECTION_H_
