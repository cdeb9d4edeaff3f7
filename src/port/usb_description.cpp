#include "port/usb_description.h"

#include <algorithm>
#include <cstring>

#include "port/bounded_text.h"

namespace vexo {
namespace {

constexpr std::string_view kNothing = " ";  // Stands for a serial, name or id that the system does not report.
constexpr size_t kIdDigits = 4;
constexpr char kRecordEnd = '|';

// The text between the first and second "\": the printer's name in "USBPRINT\MODEL\7&1A2B3C&0&USB001".
std::string_view NameOf(std::string_view bus_relations) {
  const size_t first = bus_relations.find('\\');
  if (first == std::string_view::npos) {
    return kNothing;
  }
  const std::string_view rest = bus_relations.substr(first + 1);
  const size_t second = rest.find('\\');
  return second != std::string_view::npos ? rest.substr(0, second) : kNothing;
}

// The four digits after `key`.
//
// Compatibility: they count only when more text follows them.
std::string_view DigitsOf(std::string_view hardware_id, std::string_view key) {
  const size_t at = hardware_id.find(key);
  if (at == std::string_view::npos || hardware_id.size() - at <= key.size() + kIdDigits) {
    return kNothing;
  }
  return hardware_id.substr(at + key.size(), kIdDigits);
}

// The last of the parts between "&" if it names a port of the system's printer driver: "USB001".
std::string_view PortOf(std::string_view bus_relations) {
  const size_t separator = bus_relations.rfind('&');
  if (separator == std::string_view::npos) {
    return {};
  }
  const std::string_view last = bus_relations.substr(separator + 1);
  return last.find("USB") != std::string_view::npos ? last : std::string_view();
}

// One record. Text beyond the maximum length is cut off, but the record always ends in "|", at which hosts split the
// list.
class Record {
 public:
  explicit Record(const UsbDevice& printer) {
    const std::string_view serial = UsbSerial(printer.instance_id).value_or(kNothing);
    Append("USB,");
    Append(serial);
    Append(";");
    Append(serial);  // Compatibility: twice; hosts count the fields.
    Append(";");
    Append(NameOf(printer.bus_relations));
    Append(";VID_");
    Append(DigitsOf(printer.hardware_id, "VID_"));
    Append("&PID_");
    Append(DigitsOf(printer.hardware_id, "PID_"));
    Append(";");
    AppendUpperCased(PortOf(printer.bus_relations));
    Append(";");
    AppendUpperCased(printer.location);
    text_[length_++] = kRecordEnd;
  }

  std::string_view text() const { return {text_, length_}; }

 private:
  // Leaves room for the "|".
  std::string_view Cut(std::string_view piece) const { return piece.substr(0, kMaxUsbRecordLength - 1 - length_); }

  void Append(std::string_view piece) {
    const std::string_view fitting = Cut(piece);
    std::copy(fitting.begin(), fitting.end(), text_ + length_);
    length_ += fitting.size();
  }

  void AppendUpperCased(std::string_view piece) {
    const std::string_view fitting = Cut(piece);
    std::transform(fitting.begin(), fitting.end(), text_ + length_, [](char c) { return UpperCaseAscii(c); });
    length_ += fitting.size();
  }

  char text_[kMaxUsbRecordLength];
  size_t length_ = 0;
};

}  // namespace

UsbDescriptionList::UsbDescriptionList(char* buffer, size_t size) : buffer_(buffer), size_(size) {
  std::memset(buffer, 0, size);
}

void UsbDescriptionList::Add(const UsbDevice& printer) {
  const Record record(printer);
  const std::string_view text = record.text();
  if (used_ + text.size() + 1 <= size_) {
    std::copy(text.begin(), text.end(), buffer_ + used_);
    used_ += text.size();
  }
}

void UsbDescriptionList::Finish() {
  if (used_ > 0) {
    buffer_[used_ - 1] = '\0';
  }
}

}  // namespace vexo
