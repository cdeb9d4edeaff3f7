// The maker's USB products. New product lines are entered here and nowhere else.
//
// Identifiers are searched for in a device's upper-cased hardware id, "USB\VID_1A2B&PID_0001&REV_0100"; hexadecimal
// digits are therefore upper-case.
#ifndef VEXO_PORT_USB_IDENTIFIERS_H_
#define VEXO_PORT_USB_IDENTIFIERS_H_

#include <cstdint>
#include <string_view>

namespace vexo {

// The first one matches every product of its vendor.
inline constexpr std::string_view kMakerIdentifiers[] = {
    "VID_1A2B&PID_",
    "VID_1A2D&PID_0101",
    "VID_1A2D&PID_0102",
};

// Product families of one vendor: a product id is the two digits of the family and a model number of 00 to 63
// hexadecimal.
inline constexpr std::string_view kFamilyVendor = "VID_1A2C&PID_";
inline constexpr std::string_view kProductFamilies[] = {"B0", "90", "60", "40", "00", "FF", "20"};
inline constexpr uint32_t kModelsPerFamily = 100;

// A printer sold under another maker's name. It must not be read while reading is switched off.
inline constexpr std::string_view kGatedPrinter = "VID_0FE6&PID_811E";

}  // namespace vexo

#endif  // VEXO_PORT_USB_IDENTIFIERS_H_
