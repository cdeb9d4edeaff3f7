// Both exports against a port that the host made.
#include <gtest/gtest.h>

#include <iterator>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "support/allocation_faults.h"
#include "support/scripted_port.h"
#include "vexo/extend.h"

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

TEST(SetPrintWidth, SendsTheLowSixteenBitsAndHasThemSaved) {
  const struct {
    uint32_t width;
    uint8_t low;
    uint8_t high;
  } rows[] = {{640, 0x80, 0x02}, {0x1ABCD, 0xCD, 0xAB}, {0, 0, 0}, {0xFFFFFFFF, 0xFF, 0xFF}};
  for (const auto& row : rows) {
    Printer printer;
    printer.port.OnRead({0, {1, 2, 3}});
    printer.port.OnRead({0, {0}});
    EXPECT_EQ(0, printer.Set(row.width));
    Bytes set = BytesOf("\x1b\x1c& V1 setkey\r\n\x01\xCC\x00\x02"s);
    set.insert(set.end(), {row.low, row.high});
    EXPECT_EQ((std::vector<Bytes>{set, BytesOf("\x1b\x1c& V1 do \"save_param_zone\"\r\n")}), printer.port.Written());
    EXPECT_EQ(kSetOperations, printer.port.Operations());
  }
}

TEST(SetPrintWidth, JudgesTheSavingAlone) {
  const struct {
    const char* name;
    Step acknowledgement;
    Step saved;
    int32_t code;
  } rows[] = {
      {"no acknowledgement", {-332}, {0, {0}}, 0},
      {"short acknowledgement", {-332, {7}}, {0, {0}}, 0},
      {"uncounted acknowledgement", {0, {9, 9, 0}, 0}, {0, {0}}, 0},
      {"saved, though the read failed", {}, {-332, {0}}, 0},
      {"not saved", {}, {0, {1}}, -331},
      {"no answer", {0, {0}}, {-332}, -331},
      {"two bytes", {}, {0, {0}, 2}, -331},
      {"answer failed", {}, {22, {}}, -331},
  };
  for (const auto& row : rows) {
    Printer printer;
    printer.port.OnRead(row.acknowledgement);
    printer.port.OnRead(row.saved);
    EXPECT_EQ(row.code, printer.Set()) << row.name;
    EXPECT_EQ(kSetOperations, printer.port.Operations()) << row.name;
  }
}

TEST(SetPrintWidth, AcknowledgementThatFilledTheBufferUncountedFails) {
  Printer printer;
  printer.port.OnRead({0, {9, 9, 1}, 0});
  EXPECT_EQ(-331, printer.Set());
  EXPECT_EQ(2U, printer.Steps());
}

TEST(GetPrintWidth, AsksForTheKeyAndTakesTwoBytes) {
  const struct {
    Step reply;
    int32_t code;
    uint32_t width;
  } rows[] = {
      {{0, {0x40, 0x02}}, 0, 576},
      {{-332, {0, 0}}, 0, 0},
      // Any other count gives the read's own result.
      {{-332, {1}}, -332, kUntouched},
      {{10054}, 10054, kUntouched},
      {{0, {}}, 0, kUntouched},
      {{0, {1, 2}, 64}, 0, kUntouched},
  };
  for (const auto& row : rows) {
    Printer printer;
    printer.port.OnRead(row.reply);
    EXPECT_EQ(row.code, printer.Get());
    EXPECT_EQ(row.width, printer.width);
    EXPECT_EQ((std::vector<Bytes>{BytesOf("\x1b\x1c& V1 getkey\r\n\x01\xCC\x00\x02"s)}), printer.port.Written());
    EXPECT_EQ(kGetOperations, printer.port.Operations());
  }
}

// Each exchange is cut short after `steps` operations, by a write that fails or by another thread that changes the
// handle meanwhile. A port object without its magic is no matter of the handle: it shows when an operation is called.
TEST(PrintWidth, ExchangeEndsAtTheStepThatFails) {
  static const struct {
    const char* name;
    void (*change)(VexoPrinterHandle* handle);
    int32_t code;
  } kFaults[] = {
      {"timeout", nullptr, -322},
      {"system's code", nullptr, 995},
      {"closed", [](VexoPrinterHandle* handle) { handle->portOpen = 0; }, -309},
      {"port gone", [](VexoPrinterHandle* handle) { handle->port = nullptr; }, -309},
      {"wrong magic", [](VexoPrinterHandle* handle) { handle->magic = 559; }, -6},
      {"wrong port magic", [](VexoPrinterHandle* handle) { handle->port->magic = 0; }, -6},
  };
  for (const auto& fault : kFaults) {
    SCOPED_TRACE(fault.name);
    const auto faulty = [&fault](Printer* printer, Bytes bytes = {}) {
      return fault.change == nullptr
                 ? Step{fault.code, {}, 7}
                 : Step{0, std::move(bytes), {}, [&fault, printer] { fault.change(&printer->handle); }};
    };
    Printer asked;
    asked.port.OnWrite(faulty(&asked));
    EXPECT_EQ(fault.code, asked.Get());
    EXPECT_EQ(1U, asked.Steps());
    EXPECT_EQ(kUntouched, asked.width);

    Printer after_setkey;
    after_setkey.port.OnWrite(faulty(&after_setkey));
    EXPECT_EQ(fault.code, after_setkey.Set());
    EXPECT_EQ(1U, after_setkey.Steps());

    if (fault.change == nullptr) {
      Printer saving;
      saving.port.OnWrite({});
      saving.port.OnWrite(faulty(&saving));
      EXPECT_EQ(fault.code, saving.Set());
      EXPECT_EQ(3U, saving.Steps());
      continue;
    }
    EXPECT_EQ(fault.code, after_setkey.Set()) << "the handle as it is now";
    EXPECT_EQ(fault.code, asked.Get());
    EXPECT_EQ(2U, after_setkey.Steps() + asked.Steps());

    Printer after_acknowledgement;
    after_acknowledgement.port.OnRead(faulty(&after_acknowledgement, {0}));
    EXPECT_EQ(fault.code, after_acknowledgement.Set());
    EXPECT_EQ(2U, after_acknowledgement.Steps());

    // After the second write the acknowledgement is all there is to judge: one zero byte passes for the answer.
    for (const Bytes& acknowledgement : {Bytes{0}, Bytes{1}, Bytes{0, 0, 0}, Bytes{}}) {
      Printer after_save;
      after_save.port.OnRead({0, acknowledgement});
      after_save.port.OnWrite({});
      after_save.port.OnWrite(faulty(&after_save));
      const bool passes = &fault != std::end(kFaults) - 1 && acknowledgement == Bytes{0};
      EXPECT_EQ(passes ? 0 : -331, after_save.Set());
      EXPECT_EQ(3U, after_save.Steps());
    }
  }
  EXPECT_EQ(-6, SetPrintWidth(nullptr, 576));
  EXPECT_EQ(-6, GetPrintWidth(nullptr, nullptr));
}

TEST(PrintWidth, OperationThatTheHostLeftOutIsNotThere) {
  Printer printer;
  printer.port.VexoPort::Read = nullptr;
  EXPECT_EQ(-7, printer.Get());
  printer.port.VexoPort::Write = nullptr;
  EXPECT_EQ(-7, printer.Set());
}

// What was sent before memory ran out is a whole command, or nothing.
TEST(PrintWidth, EveryAllocationThatFailsIsThrown) {
  for (const bool set : {true, false}) {
    const std::vector<size_t> command_sizes = set ? std::vector<size_t>{21, 29} : std::vector<size_t>{19};
    bool struck = true;
    for (uint32_t nth = 1; struck; ++nth) {
      Printer printer;
      bool thrown = false;
      AllocationFault fault(nth);
      try {
        static_cast<void>(set ? printer.Set() : printer.Get());
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      struck = fault.Lift();
      EXPECT_EQ(struck, thrown) << nth;

      const std::vector<Bytes> written = printer.port.Written();
      EXPECT_EQ(struck, written.size() < command_sizes.size()) << nth;
      for (size_t i = 0; i < written.size(); ++i) {
        EXPECT_EQ(command_sizes[i], written[i].size()) << nth;
      }
    }
  }
}

}  // namespace
}  // namespace vexo::test
