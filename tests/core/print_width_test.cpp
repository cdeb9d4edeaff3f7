// SetPrintWidth and GetPrintWidth on a scripted port.
#include "core/core_test.h"

namespace vexo::test {
namespace {

using namespace std::string_literals;
using Step = ScriptedPort::Step;
using Operations = std::vector<std::string>;

const Operations kSetOperations = {"Write(0, 21)", "Read(0, 3)", "Write(0, 29)", "Read(0, 1)"};
const Operations kGetOperations = {"Write(0, 19)", "Read(0, 2)"};
constexpr uint32_t kUntouched = 7777;

struct Printer {
  int32_t Set(uint32_t dots = 576) { return SetPrintWidth(&handle, dots); }
  int32_t Get() { return GetPrintWidth(&handle, &width); }
  size_t Steps() const { return port.Operations().size(); }

  ScriptedPort port;
  VexoPrinterHandle handle = OpenHandle(&port);
  uint32_t width = kUntouched;
};

TEST(SetPrintWidth, SendsTheLowSixteenBitsAndSavesThem) {
  const std::tuple<uint32_t, uint8_t, uint8_t> rows[] = {
      {640, 0x80, 0x02}, {0x1ABCD, 0xCD, 0xAB}, {0, 0, 0}, {0xFFFFFFFF, 0xFF, 0xFF}};
  for (const auto& [width, low, high] : rows) {
    Printer printer;
    printer.port.OnRead({0, {1, 2, 3}});
    printer.port.OnRead({0, {0}});
    EXPECT_EQ(0, printer.Set(width));
    Bytes set = BytesOf("\x1b\x1c& V1 setkey\r\n\x01\xCC\x00\x02"s);
    set.insert(set.end(), {low, high});
    EXPECT_EQ((std::vector<Bytes>{set, BytesOf("\x1b\x1c& V1 do \"save_param_zone\"\r\n")}), printer.port.Written());
    EXPECT_EQ(kSetOperations, printer.port.Operations());
  }
}

TEST(SetPrintWidth, ResultDependsOnTheSavingOnly) {
  const std::tuple<const char*, Step, Step, int32_t> rows[] = {
      {"no acknowledgement", {-332}, {0, {0}}, 0},
      {"uncounted acknowledgement", {0, {9, 9, 0}, 0}, {0, {0}}, 0},
      {"saved, though the read failed", {}, {-332, {0}}, 0},
      {"not saved", {}, {0, {1}}, -331},
      {"no answer", {0, {0}}, {-332}, -331},
      {"two bytes", {}, {0, {0}, 2}, -331},
  };
  for (const auto& [name, acknowledgement, saved, code] : rows) {
    Printer printer;
    printer.port.OnRead(acknowledgement);
    printer.port.OnRead(saved);
    EXPECT_EQ(code, printer.Set()) << name;
    EXPECT_EQ(kSetOperations, printer.port.Operations()) << name;
  }
}

TEST(SetPrintWidth, NegativeAcknowledgementWithCountZeroFails) {
  Printer printer;
  printer.port.OnRead({0, {9, 9, 1}, 0});
  EXPECT_EQ(-331, printer.Set());
  EXPECT_EQ(2U, printer.Steps());
}

TEST(GetPrintWidth, ReadsTheKeyAsTwoBytes) {
  const std::tuple<Step, int32_t, uint32_t> rows[] = {
      {{0, {0x40, 0x02}}, 0, 576},
      {{-332, {0, 0}}, 0, 0},
      // With any other count, the result is that of the read.
      {{-332, {1}}, -332, kUntouched},
      {{10054}, 10054, kUntouched},
      {{0, {}}, 0, kUntouched},
      {{0, {1, 2}, 64}, 0, kUntouched},
  };
  for (const auto& [reply, code, width] : rows) {
    Printer printer;
    printer.port.OnRead(reply);
    EXPECT_EQ(code, printer.Get());
    EXPECT_EQ(width, printer.width);
    EXPECT_EQ((std::vector<Bytes>{BytesOf("\x1b\x1c& V1 getkey\r\n\x01\xCC\x00\x02"s)}), printer.port.Written());
    EXPECT_EQ(kGetOperations, printer.port.Operations());
  }
}

TEST(PrintWidth, FailedWriteEndsTheExchange) {
  for (const int32_t code : {-322, 995}) {
    const Step failing = {code, {}, 7};
    Printer asked;
    asked.port.OnWrite(failing);
    EXPECT_EQ(code, asked.Get());
    EXPECT_EQ(1U, asked.Steps());
    EXPECT_EQ(kUntouched, asked.width);
    for (const bool at_once : {true, false}) {
      Printer set;
      set.port.OnWrite(at_once ? failing : Step{});
      set.port.OnWrite(failing);
      EXPECT_EQ(code, set.Set());
      EXPECT_EQ(at_once ? 1U : 3U, set.Steps());
    }
  }
}

// Another thread changes the handle during an operation. A port object without its magic is detected only by the next
// operation on it.
TEST(PrintWidth, ChangedHandleEndsTheExchange) {
  static const struct {
    void (*change)(VexoPrinterHandle* handle);
    int32_t code;
    int32_t code_at_last_write;  // SetPrintWidth then checks the acknowledgement in place of the answer.
  } kRows[] = {
      {[](VexoPrinterHandle* handle) { handle->portOpen = 0; }, -309, 0},
      {[](VexoPrinterHandle* handle) { handle->port = nullptr; }, -309, 0},
      {[](VexoPrinterHandle* handle) { handle->magic = 559; }, -6, 0},
      {[](VexoPrinterHandle* handle) { handle->port->magic = 0; }, -6, -331},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(&row - kRows);
    for (const size_t last_step : {1U, 2U, 3U}) {
      Printer printer;
      const Step plain = {0, {0}};
      const Step changing = {0, {0}, {}, [&] { row.change(&printer.handle); }};
      printer.port.OnWrite(last_step == 1 ? changing : plain);
      printer.port.OnRead(last_step == 2 ? changing : plain);
      printer.port.OnWrite(changing);
      EXPECT_EQ(last_step == 3 ? row.code_at_last_write : row.code, printer.Set());
      EXPECT_EQ(last_step, printer.Steps());
      EXPECT_EQ(row.code, printer.Get()) << "with the changed handle";
    }
  }
  EXPECT_EQ(-6, SetPrintWidth(nullptr, 576));
  EXPECT_EQ(-6, GetPrintWidth(nullptr, nullptr));
}

TEST(PrintWidth, NullOperationIsRefused) {
  Printer printer;
  printer.port.VexoPort::Read = nullptr;
  EXPECT_EQ(-7, printer.Get());
  printer.port.VexoPort::Write = nullptr;
  EXPECT_EQ(-7, printer.Set());
}

}  // namespace
}  // namespace vexo::test
