// Selection and listing of USB devices, and the URI of an open USB port.
#include "port/usb_selection.h"

#include <cstdio>
#include <cstring>

#include "core/core_test.h"
#include "port/usb_description.h"
#include "port/usb_uri.h"

namespace vexo {
namespace {

UsbDevice Device(std::string_view hardware_id) {
  UsbDevice device;
  device.hardware_id = hardware_id;
  return device;
}

TEST(UsbSelection, MakerDevicesAreThoseOfTheList) {
  const std::pair<const char*, bool> rows[] = {
      {"VID_1A2B&PID_", true},
      {"VID_1A2B&PID", false},
      {"usb\\vid_1a2b&pid_0001", false},
      {"USB\\VID_1A2D&PID_0101", true},
      {"USB\\VID_1A2D&PID_0102&MI_00", true},
      {"USB\\VID_1A2D&PID_0103", false},
      {"VID_0FE6&PID_811E", false},
  };
  for (const auto& [hardware_id, is_maker] : rows) {
    EXPECT_EQ(is_maker, IsMakerDevice(hardware_id)) << hardware_id;
  }
}

// Checks every product id against the list of product families.
TEST(UsbSelection, ProductFamilies) {
  std::vector<bool> listed(0x10000);
  for (const auto& [few, many] : {std::pair("B00", "B0"),
                                  {"900", "90"},
                                  {"600", "60"},
                                  {"400", "40"},
                                  {"000", "00"},
                                  {"FF0", "FF"},
                                  {"200", "20"}}) {
    for (int model = 0; model < 100; ++model) {
      char product[16];
      std::snprintf(product, sizeof(product), "%s%X", model < 16 ? few : many, static_cast<unsigned>(model));
      listed[std::stoul(product, nullptr, 16)] = true;
    }
  }
  for (unsigned product = 0; product < listed.size(); ++product) {
    char hardware_id[48];
    std::snprintf(hardware_id, sizeof(hardware_id), "USB\\VID_1A2C&PID_%04X&REV_0100", product);
    EXPECT_EQ(listed[product], IsMakerDevice(hardware_id)) << hardware_id;
  }
}

int asked = 0;
bool Configured(std::string_view /*hardware_id*/) { return ++asked > 0; }
bool NotConfigured(std::string_view /*hardware_id*/) { return ++asked == 0; }

TEST(UsbSelection, DevicesQualifyInOrder) {
  using Qualification = UsbQualification;
  const struct {
    const char* hardware_id;
    const char* parent_id;
    Qualification alone;  // Without a configuration file; with one, all qualify as the maker's.
  } rows[] = {
      {"USB\\VID_1A2B&PID_1", "", Qualification::kMaker},
      {"USBSTOR\\DISK", "USB\\VID_1A2B&PID_1\\A1", Qualification::kMaker},
      {"USB\\VID_0FE6&PID_811E", "", Qualification::kGated},
      {"USBSTOR\\DISK", "USB\\VID_0FE6&PID_811E\\A1", Qualification::kGated},
      {"USB\\VID_0FE6&PID_811F", "USB\\ROOT_HUB", Qualification::kNone},
  };
  UsbQualifier alone(NotConfigured);
  UsbQualifier configured(Configured);
  asked = 0;
  for (const auto& row : rows) {
    UsbDevice device = Device(row.hardware_id);
    device.parent_id = row.parent_id;
    EXPECT_EQ(row.alone, alone.Qualify(device)) << row.hardware_id;
    EXPECT_EQ(Qualification::kMaker, configured.Qualify(device)) << row.hardware_id;
    EXPECT_EQ(&row < rows + 2 ? 0 : 2, asked) << "a property was read for a maker's device, or twice";
  }
}

TEST(UsbSelection, OnePrintServiceIsEnough) {
  for (const auto& [service, is_one] : {std::pair("UsbPrint", true), {"", true}, {"usbprinter", false}}) {
    UsbQualifier qualifier(NotConfigured);
    EXPECT_TRUE(qualifier.wants_service());
    qualifier.NoteService(service);
    qualifier.NoteService("disk");
    EXPECT_EQ(!is_one, qualifier.wants_service()) << service;
  }
}

TEST(UsbSelection, AnyOfTheCriteriaSuffices) {
  const UsbDevice printer = {"USB\\VID_1A2B&PID_00AF&REV_0100",    "PORT_#0001.HUB_#0002",
                             "USBPRINT\\MODEL\\7&1A2B3C&0&USB001", "USB\\VID_1A2B&PID_00AF\\aBC123",
                             "USBPRINT\\Model\\7&1A2B3C&0&USB001", ""};
  UsbDevice disk = Device("USBSTOR\\DISK");
  disk.parent_id = "USB\\VID_1A2B&PID_00AF\\D1";
  const struct {
    const UsbDevice& device;
    UsbCriteria criteria;  // any, device name, location, portnum, vid, pid
    bool matches;
  } rows[] = {
      {printer, {true, "", "ELSEWHERE", "", "", ""}, true},
      {printer, {false, "", "", "", "1a2b", "00aF"}, true},
      {printer, {false, "OTHER", "", "USB002", "1A2B", "00B0"}, false},
      {printer, {false, "", "port_#0001.hub_#0002", "", "", ""}, true},
      {printer, {false, "usbprint\\model\\7&1a2b3c&0&usb001", "", "", "", ""}, true},
      {printer, {false, "Abc123", "", "", "", ""}, true},
      {printer, {false, "OTHER", "ELSEWHERE", "USB001", "1", "2"}, true},
      {disk, {false, "", "", "", "1A2B", "00AF"}, true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.matches, MatchesUsbCriteria(row.device, row.criteria)) << &row - rows;
  }
}

std::string List(const std::vector<UsbDevice>& printers, size_t size) {
  std::string buffer(size + 1, '~');
  UsbDescriptionList list(buffer.data(), size);
  for (const UsbDevice& printer : printers) {
    list.Add(printer);
  }
  list.Finish();
  EXPECT_EQ('~', buffer[size]);
  EXPECT_EQ(std::string::npos, buffer.substr(0, size).find('~'));
  return buffer.c_str();
}

TEST(UsbDescription, IsBuiltFromTheDeviceProperties) {
  const std::pair<UsbDevice, const char*> rows[] = {
      {{"USB\\VID_1A2B&PID_0001&REV_0100", "PORT_#0001.hub", "USBPRINT\\MODEL\\7&1A2B3C&0&USB001",
        "USB\\VID_1A2B&PID_0001\\ABC123"},
       "USB,ABC123;ABC123;MODEL;VID_1A2B&PID_0001;USB001;PORT_#0001.HUB"},
      {{"", "", "", ""}, "USB, ; ; ;VID_ &PID_ ;;"},
      // A product id at the end of the text is ignored.
      {{"USB\\VID_1A2B&PID_0001", "", "USBPRINT\\MODEL", "NOTHING"}, "USB, ; ; ;VID_1A2B&PID_ ;;"},
      {{"VID_1&PID_", "", "A\\b\\c&usb001", "A\\b\\"}, "USB,;;b;VID_1&PI&PID_ ;;"},
      {{"", "", "USB001&", "\\a"}, "USB,a;a; ;VID_ &PID_ ;;"},
  };
  for (const auto& [printer, record] : rows) {
    EXPECT_EQ(record, List({printer}, 256));
  }
}

TEST(UsbDescription, RecordsThatDoNotFitAreLeftOut) {
  const UsbDevice small = {"", "", "", "\\a"};
  const UsbDevice large = {"", "", "", "\\bbbbbbbbbb"};
  const std::string a = List({small}, 256);
  const std::string b = List({large}, 256);
  const size_t both = a.size() + 1 + b.size() + 1;  // One byte too few.
  const std::pair<size_t, std::string> rows[] = {
      {1, ""}, {a.size() + 1, ""}, {a.size() + 2, a}, {both, a + '|' + a}, {both + 1, a + '|' + b}};
  for (const auto& [size, list] : rows) {
    EXPECT_EQ(list, List({small, large, small}, size)) << size;
  }
  EXPECT_EQ("USB," + std::string(250, 'S'), List({{"", "", "", "\\" + std::string(5000, 'S')}}, 256));
}

FoundUsbDevice Found(const char* location, const char* path, const char* serial) {
  FoundUsbDevice found;
  std::strcpy(found.location, location);
  std::strcpy(found.path, path);
  found.has_serial = serial != nullptr;
  std::strcpy(found.serial, serial != nullptr ? serial : "");
  return found;
}

// The URI after opening. Opening it again must not change it.
std::string Opened(const std::string& configured, const FoundUsbDevice& found) {
  char uri[kUriBufferSize] = {};
  std::strcpy(uri, configured.c_str());
  const size_t length = LengthWithoutFoundDevice(uri);
  WriteFoundDevice(uri, length, found);
  const std::string opened = uri;
  WriteFoundDevice(uri, length, found);
  EXPECT_EQ(opened, uri);
  WriteFoundDevice(uri, LengthWithoutFoundDevice(uri), found);
  EXPECT_EQ(opened, uri) << "the URI of an open port";
  DeviceUri parsed;
  EXPECT_EQ(VEXO_OK, ParseDeviceUri(&parsed, uri)) << uri;
  return opened;
}

TEST(UsbUri, ContainsThePlaceOfTheDevice) {
  const std::string usb = "vexo:/dev/bus/USB/DEVICE";
  const FoundUsbDevice found = Found("PORT_#1", "\\\\?\\usb#1", "A1");
  const std::string where = "location=PORT_#1+deviceid=\\\\?\\usb#1";
  const std::pair<std::string, std::string> rows[] = {
      {"", "?" + where + "+sn=A1"},
      {"?vid=1A2B+pid=1", "?vid=1A2B+pid=1+" + where + "+sn=A1"},
      {"?location=2+deviceid=3+sn=4", "?" + where + "+sn=A1"},
      {"?location=2+vid=1+deviceid=3", "?location=2+vid=1+" + where + "+sn=A1"},
      {"?deviceids=3+sn=4", "?deviceids=3+sn=4+" + where + "+sn=A1"},
  };
  for (const auto& [configured, opened] : rows) {
    EXPECT_EQ(usb + opened, Opened(usb + configured, found)) << configured;
  }
  EXPECT_EQ(usb + '?' + where, Opened(usb, Found("PORT_#1", "\\\\?\\usb#1", nullptr)));
  EXPECT_EQ(usb + "?location=+deviceid=p+sn=A1", Opened(usb, Found("", "p", "A1")));
}

}  // namespace
}  // namespace vexo
