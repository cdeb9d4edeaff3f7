#include "session/device_session.h"

#include <deque>
#include <memory>

#include "config/sdk_config.h"
#include "core/driver_test.h"
#include "messages/error_text.h"
#include "session/port_parameter.h"

namespace vexo::test {
namespace {

using Sleeps = std::vector<uint32_t>;

const std::string kModel = "KM451";
const std::string kNet = "NET,192.168.100.200,9100";
constexpr int32_t kClosed = 5;  // The result of Close of fake devices.

std::string UsbPrinter(const std::string& parameters) { return "vexo:/dev/bus/USB/DEVICE?" + parameters; }

// A printer that sends one of these pieces at each read.
DriverScript Sending(std::deque<std::string> pieces) {
  DriverScript script;
  script.on_read = [pieces = std::make_shared<std::deque<std::string>>(std::move(pieces))](uint8_t* buffer, uint32_t) {
    if (pieces->empty()) {
      return 0U;
    }
    const std::string piece = pieces->front();
    pieces->pop_front();
    std::copy(piece.begin(), piece.end(), buffer);
    return static_cast<uint32_t>(piece.size());
  };
  return script;
}

class Session : public DriverTest {
 protected:
  Session() { SetClock(0); }
  ~Session() override { EXPECT_EQ(nullptr, LoadedSdkConfig()); }
};

TEST_F(Session, ConnectsExchangesBytesAndDisconnects) {
  DeviceSession session;
  EXPECT_EQ(-6, session.Send(BytesOf("a")));
  EXPECT_EQ(-6, session.Receive());
  EXPECT_EQ(-6, session.Disconnect());
  EXPECT_FALSE(session.IsConnected());
  ASSERT_EQ(0, session.Connect(kModel, kNet)) << "earlier failures do not matter";
  EXPECT_TRUE(session.IsConnected());
  EXPECT_EQ(kModel, session.model_name());
  EXPECT_EQ(kNet, session.descriptor());

  std::string written;
  DriverScript script = Sending({"abc", "", "def"});
  script.on_write = [&written](const uint8_t* bytes, uint32_t length) {
    written.append(bytes, bytes + length);
    return 0;
  };
  SetDriverScript(script);
  EXPECT_EQ(0, session.Send(BytesOf("question")));
  EXPECT_EQ("question", written);
  for (const char* const received : {"abc", "abc", "abcdef"}) {  // An empty read ends a reply.
    EXPECT_EQ(0, session.Receive());
    EXPECT_EQ(BytesOf(received), session.received());
  }

  EXPECT_EQ(0, session.Connect("another", "LPT1")) << "already connected: only the last result is returned";
  EXPECT_EQ(kNet, session.descriptor());
  SetDriverScript({});
  EXPECT_EQ(kClosed, session.Disconnect());
  EXPECT_EQ("NET Close", DriverCalls().front());
  EXPECT_FALSE(session.IsConnected());
  EXPECT_EQ(nullptr, session.handle());
  EXPECT_EQ("5", session.message());
}

TEST_F(Session, FailedConnectionLeaksNothing) {
  const std::tuple<std::string, std::string, DriverScript, int32_t> rows[] = {
      {"KM45", kNet, {}, -8},   {kModel, "FOO", {}, -301},       {kModel, "FILE,x", {}, -4},
      {kModel, kNet, {-1}, -1}, {kModel, kNet, {0, -311}, -311}, {kModel, UsbPrinter("sn=1"), {0, 1167}, 1167}};
  for (const auto& [model, descriptor, script, code] : rows) {
    DeviceSession session;
    SetDriverScript(script);
    EXPECT_EQ(code, session.Connect(model, descriptor));
    SetDriverScript({});
    EXPECT_EQ(code, session.last_result());
    EXPECT_EQ(GetErrorText(code), session.message());
    EXPECT_EQ(nullptr, session.handle());
    ExpectNothingLeaked();
    EXPECT_EQ(nullptr, LoadedSdkConfig());
    EXPECT_EQ(0, session.Connect(kModel, kNet)) << code;
  }
}

TEST_F(Session, SendRetriesAfterTimeouts) {
  for (const auto& [timeouts, end] : {std::pair(0, -321), std::pair(500, 0), std::pair(1, 10054)}) {
    DeviceSession session;
    ASSERT_EQ(0, session.Connect(kModel, kNet));
    int writes = 0;
    DriverScript script;
    script.on_write = [&, patience = timeouts, result = end](const uint8_t* bytes, uint32_t length) {
      EXPECT_EQ("CER", std::string(bytes, bytes + length));
      return ++writes <= patience ? -322 : result;
    };
    SetDriverScript(script);
    SetClock(0);
    EXPECT_EQ(end, session.Send(BytesOf("CER")));
    EXPECT_EQ(end == 0, session.message().empty());
    EXPECT_EQ(Sleeps(static_cast<size_t>(timeouts), 100), RecordedSleeps());
  }
}

TEST_F(Session, ReceiveWaitsForAReply) {
  const std::tuple<std::deque<std::string>, int64_t, std::string, Sleeps> rows[] = {
      {{"", "", "abc", "def"}, 20, "abc", {20, 20}},
      {{"", "", "", "", "", "", "late"}, 200, "", {200, 200, 200, 200, 200, 200}},
      {{"", "a"}, -1, "a", {}},
      {{"", "a"}, 1LL << 40, "a", {0xFFFFFFFF}},
      {{std::string(4096, 'x'), "y"}, 20, std::string(4096, 'x'), {}}};
  for (const auto& [pieces, pause, received, sleeps] : rows) {
    DeviceSession session;
    ASSERT_EQ(0, session.Connect(kModel, kNet));
    if (pause != 20) {
      session.set_pause(pause);
    }
    SetDriverScript(Sending(pieces));
    SetClock(0);
    EXPECT_EQ(0, session.Receive());
    EXPECT_EQ(BytesOf(received), session.received());
    EXPECT_EQ(sleeps, RecordedSleeps());
  }
}

TEST_F(Session, DamagedHandleIsReleased) {
  DeviceSession session;
  ASSERT_EQ(0, session.Connect(kModel, kNet));
  session.handle()->portOpen = 0;
  EXPECT_EQ(-309, session.Send(BytesOf("a")));
  EXPECT_EQ(-309, session.Receive());
  session.handle()->magic = 0;
  EXPECT_EQ(-6, session.Disconnect());
  EXPECT_EQ(nullptr, session.handle());
  ExpectNothingLeaked();
}

TEST_F(Session, SerialNumberAndDeviceIdentifierComeFromTheUri) {
  const std::string longest(63, 's');
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {UsbPrinter("sn=ab12+deviceid=usb#vid_1a2b&pid_0001#7"), "ab12", "VID_1A2B&PID_0001"},
      {UsbPrinter("deviceid=##x+sn=" + longest), longest, ""},
      {UsbPrinter("deviceid=none+sn=" + longest + "s"), "", ""},
      {UsbPrinter("deviceid=" + std::string(24, 'u') + "#abcdef"), "", "ABCDEF"},  // 31 characters fit.
      {UsbPrinter("deviceid=" + std::string(24, 'u') + "#abcdefg"), "", ""},
      {UsbPrinter("sn=last+deviceid=usb#last"), "last", "LAST"},
      {kNet, "", ""}};
  DeviceSession session;
  for (const auto& [descriptor, serial_number, device_identifier] : rows) {
    ASSERT_EQ(0, session.Connect(kModel, descriptor));
    EXPECT_EQ(serial_number, session.serial_number());
    EXPECT_EQ(device_identifier, session.device_identifier());
    EXPECT_EQ(kClosed, session.Disconnect());
  }
}

TEST_F(Session, ParametersOfThePortsUri) {
  ASSERT_EQ(0, ScannerGunPortOpen(&handle_, "NET,10.0.0.5"));
  const struct {
    const char* key;
    int32_t size;
    int32_t result;
    const char* text;
  } rows[] = {{"ip", 9, 0, "10.0.0.5"}, {"ip", 8, -2, "#"}, {"ip", -1, -2, "#"}, {"sn", 9, 0, "#"}};
  for (const auto& row : rows) {
    char text[16] = "#";
    EXPECT_EQ(row.result, GetPortUriParameter(&handle_, row.key, text, row.size)) << row.key << row.size;
    EXPECT_STREQ(row.text, text);
  }
  char text[16];
  ScriptedPort without_uri;
  VexoPrinterHandle other = OpenHandle(&without_uri);
  EXPECT_EQ(-1, GetPortUriParameter(&other, "ip", text, 16));
  handle_.portOpen = 0;
  EXPECT_EQ(-309, GetPortUriParameter(&handle_, "ip", text, 16));
  EXPECT_EQ(-6, GetPortUriParameter(nullptr, "ip", text, 16));
}

TEST_F(Session, ExternalHandleIsNeitherOpenedNorUsed) {
  DeviceSession session;
  session.set_external_handle(true);
  ASSERT_EQ(0, session.Connect("any", "USB"));
  EXPECT_EQ(DeviceSession::ExternalHandle(), session.handle());
  EXPECT_TRUE(session.IsConnected());
  EXPECT_EQ(-6, session.Receive());
  EXPECT_EQ(-6, session.Send(BytesOf("a")));
  EXPECT_EQ(-6, session.Connect("any", kNet)) << "the last result: it is connected already";
  EXPECT_EQ(0, session.Disconnect());
  EXPECT_EQ(-6, session.Disconnect());
  EXPECT_EQ(-6, session.Connect("any", kNet)) << "the last result: it was not connected";
  EXPECT_TRUE(DriverCalls().empty());
}

// Only the first session counts as a user of the tables. Others must work after it has released them.
TEST_F(Session, SessionWorksAfterAnotherReleasedTheTables) {
  DeviceSession first;
  DeviceSession second;
  ASSERT_EQ(0, first.Connect(kModel, kNet));
  ASSERT_EQ(0, second.Connect("KM452", kNet));
  EXPECT_EQ(kClosed, first.Disconnect());
  EXPECT_EQ(nullptr, LoadedSdkConfig());
  EXPECT_EQ("KM452", ViewText(static_cast<ModelHandle*>(second.handle())->info.model_name));
  EXPECT_EQ(0, second.Send(BytesOf("a")));
  EXPECT_EQ(0, first.Connect(kModel, kNet));
  EXPECT_EQ(kClosed, second.Disconnect());
  EXPECT_EQ(kClosed, first.Disconnect());
}

}  // namespace
}  // namespace vexo::test
