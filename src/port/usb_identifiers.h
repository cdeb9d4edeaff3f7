// Which USB products are the maker's. A new product line is entered here and nowhere else.
//
// Identifiers are looked for in a device's upper-cased hardware id, "USB\VID_1A2B&PID_0001&REV_0100". Hexadecimal
// digits are upper-case therefore.
#ifndef VEXO_PORT_USB_IDENTIFIERS_H_
#define VEXO_PORT_USB_IDENTIFIERS_H_

#include <cstdint>
#include <string_view>

namespace vexo {

// The first one stands for every product of its vendor.
inline constexpr std::string_view kMakerIdentifiers[] = {
    "VID_1A2B&PID_",
    "VID_1A2D&PID_0101",
    "VID_1A2D&PID_0102",
};

// Families of products of one vendor: a family's product ids are its two digits and the number of a model, 00 to 63
// hexadecimal.
inline constexpr std::string_view kFamilyVendor = "VID_1A2C&PID_";
inline constexpr std::string_view kProductFamilies[] = {"B0", "90", "60", "40", "00", "FF", "20"};
inline constexpr uint32_t kModelsPerFamily = 100;

// A printer under another maker's name. It must not be read while reading is switched off.
inline constexpr std::string_view kGatedPrinter = "VID_0FE6&PID_811E";

}  // namespace vexo

#endif  // VEXO_PORT_USB_IDENTIFIERS_H_
