#include "port/port_factory.h"

#include "core/driver_test.h"
#include "port/port_object.h"

namespace vexo::test {
namespace {

class PortFactory : public DriverTest {
 protected:
  // Opening fails with `code`, does not set the result and leaks nothing.
  void ExpectRefused(int32_t code, const char* text) const {
    VexoPort untouched = {};
    VexoPort* port = &untouched;
    EXPECT_EQ(code, OpenPort(&port, text)) << (text != nullptr ? text : "(null)");
    EXPECT_EQ(&untouched, port);
    ExpectNothingLeaked();
  }
};

TEST_F(PortFactory, CreatesAndConfiguresThePort) {
  const std::string lpt = "vexo:/dev/bus/LPT/";
  const std::string too_long = lpt + std::string(300, 'L');
  const struct {
    std::string text;
    uint32_t kind;
    std::string uri;
  } rows[] = {{"vexo:/dev/bus/BSP/D?baudrate=1", VEXO_PORT_SERIAL, "vexo:/dev/bus/BSP/D?baudrate=1"},
              {"lpt1", VEXO_PORT_PARALLEL, lpt + "lpt1"},
              {"USB", VEXO_PORT_USB, "vexo:/dev/bus/USB/DEVICE"},
              {"BUF", VEXO_PORT_BUFFER, ""},
              // A URI is used as given, up to the first bad parameter and up to 255 characters.
              {"vexo:/dev/bus/NET/COM1,9600?ip=1.2.3.4+port", VEXO_PORT_NET, "vexo:/dev/bus/NET/COM1,9600?ip=1.2.3.4"},
              {too_long, VEXO_PORT_PARALLEL, too_long.substr(0, 255)}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    VexoPort* port = nullptr;
    ASSERT_EQ(0, OpenPort(&port, row.text.c_str()));
    EXPECT_EQ(row.kind, port->kind);
    char uri[256] = "#";
    uint32_t length = 99;
    EXPECT_EQ(0, port->GetUri(port, uri, sizeof(uri), &length));
    EXPECT_EQ(row.uri, uri);
    EXPECT_EQ(row.uri.size(), length);
    EXPECT_EQ(0, OpenDevices());
    EXPECT_EQ(1U, PortLockReferenceCount());
    EXPECT_EQ(0, ClosePort(port));
    ExpectNothingLeaked();
  }
}

TEST_F(PortFactory, RefusesOtherTexts) {
  for (const char* const text : {static_cast<const char*>(nullptr), "", "BT", "XYZ", "COM1", "NET,10.0.0.5,,x", "USB,,",
                                 "vexo:/dev/bus/NET/DEVICE?ip="}) {
    ExpectRefused(-301, text);
  }
  for (const char* const text : {"vexo:/dev/bus/XYZ/DEVICE", "vexo:/dev/bus/bluetooth/DEVICE?address=1", "FILE,x"}) {
    ExpectRefused(-4, text);
  }
  for (const int32_t code : {-1, -9, 87}) {  // Results of Configure.
    SetDriverScript({code});
    ExpectRefused(code, "NET,10.0.0.5");
  }
}

}  // namespace
}  // namespace vexo::test
