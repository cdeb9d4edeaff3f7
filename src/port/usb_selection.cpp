#include "port/usb_selection.h"

#include <algorithm>
#include <iterator>

#include "port/bounded_text.h"
#include "port/usb_identifiers.h"

namespace vexo {
namespace {

constexpr std::string_view kPrintService = "usbprint";
constexpr size_t kFamilyDigits = 2;
constexpr size_t kModelDigits = 2;

bool Contains(std::string_view text, std::string_view piece) { return text.find(piece) != std::string_view::npos; }

bool EqualIgnoringCase(char left, char right) { return UpperCaseAscii(left) == UpperCaseAscii(right); }

bool EqualsIgnoringCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), EqualIgnoringCase);
}

// The value of an upper-case hexadecimal digit.
std::optional<uint32_t> HexDigit(char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const size_t value = kDigits.find(c);
  return value != std::string_view::npos ? std::optional<uint32_t>(static_cast<uint32_t>(value)) : std::nullopt;
}

// `product` is the text after the vendor in a hardware id.
bool IsOfAFamily(std::string_view product) {
  if (product.size() < kFamilyDigits + kModelDigits) {
    return false;
  }
  const std::string_view family = product.substr(0, kFamilyDigits);
  const auto high = HexDigit(product[kFamilyDigits]);
  const auto low = HexDigit(product[kFamilyDigits + 1]);
  return high && low && *high * 16 + *low < kModelsPerFamily &&
         std::find(std::begin(kProductFamilies), std::end(kProductFamilies), family) != std::end(kProductFamilies);
}

bool HasFamilyProduct(std::string_view hardware_id) {
  for (size_t at = hardware_id.find(kFamilyVendor); at != std::string_view::npos;
       at = hardware_id.find(kFamilyVendor, at + 1)) {
    if (IsOfAFamily(hardware_id.substr(at + kFamilyVendor.size()))) {
      return true;
    }
  }
  return false;
}

// Removes `piece`, upper-cased, from the front of *text. Returns false when it is not there.
bool TakeUpperCased(std::string_view* text, std::string_view piece) {
  const std::string_view front = text->substr(0, piece.size());
  if (!std::equal(front.begin(), front.end(), piece.begin(), piece.end(),
                  [](char a, char b) { return a == UpperCaseAscii(b); })) {
    return false;
  }
  text->remove_prefix(piece.size());
  return true;
}

// Whether a text contains "VID_vid&PID_pid".
bool HasIdentifiers(std::string_view text, std::string_view vid, std::string_view pid) {
  for (size_t at = text.find("VID_"); at != std::string_view::npos; at = text.find("VID_", at + 1)) {
    std::string_view rest = text.substr(at);
    if (TakeUpperCased(&rest, "VID_") && TakeUpperCased(&rest, vid) && TakeUpperCased(&rest, "&PID_") &&
        TakeUpperCased(&rest, pid)) {
      return true;
    }
  }
  return false;
}

bool HasName(const UsbDevice& device, std::string_view name) {
  return EqualsIgnoringCase(device.bus_relations, name) ||
         EqualsIgnoringCase(UsbSerial(device.instance_id).value_or(""), name) || Contains(device.child_id, name) ||
         Contains(device.parent_id, name);
}

}  // namespace

bool IsMakerDevice(std::string_view hardware_id) {
  return std::any_of(std::begin(kMakerIdentifiers), std::end(kMakerIdentifiers),
                     [=](std::string_view identifier) { return Contains(hardware_id, identifier); }) ||
         HasFamilyProduct(hardware_id);
}

UsbQualification UsbQualifier::Qualify(const UsbDevice& device) {
  if (IsMakerDevice(device.hardware_id) || IsMakerDevice(device.parent_id) || IsConfigured(device)) {
    return UsbQualification::kMaker;
  }
  const bool gated = Contains(device.hardware_id, kGatedPrinter) || Contains(device.parent_id, kGatedPrinter);
  return gated ? UsbQualification::kGated : UsbQualification::kNone;
}

bool UsbQualifier::IsConfigured(const UsbDevice& device) {
  if (!configured_) {
    configured_ = is_configured_(device.hardware_id);
  }
  return *configured_;
}

void UsbQualifier::NoteService(std::string_view service) {
  const auto* const at =
      std::search(kPrintService.begin(), kPrintService.end(), service.begin(), service.end(), EqualIgnoringCase);
  met_print_service_ = met_print_service_ || service.empty() || at != kPrintService.end();
}

// Compatibility: any single criterion is sufficient. A printer is still found after it has moved to another USB port,
// and another product at the same port is accepted.
bool MatchesUsbCriteria(const UsbDevice& device, const UsbCriteria& criteria) {
  if (criteria.any) {
    return true;
  }
  if (!criteria.vid.empty() && !criteria.pid.empty() &&
      (HasIdentifiers(device.hardware_id, criteria.vid, criteria.pid) ||
       HasIdentifiers(device.parent_id, criteria.vid, criteria.pid))) {
    return true;
  }
  if (!criteria.location.empty() && EqualsIgnoringCase(device.location, criteria.location)) {
    return true;
  }
  if (!criteria.device_name.empty() && HasName(device, criteria.device_name)) {
    return true;
  }
  return !criteria.portnum.empty() && Contains(device.child_id, criteria.portnum);
}

std::optional<std::string_view> UsbSerial(std::string_view instance_id) {
  const size_t separator = instance_id.rfind('\\');
  return separator != std::string_view::npos ? std::optional(instance_id.substr(separator + 1)) : std::nullopt;
}

}  // namespace vexo
