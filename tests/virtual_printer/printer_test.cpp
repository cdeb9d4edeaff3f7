// The printer model: single commands, jobs and connections over time, and downloads that the library would not send.
// The library's own conversations are tested in tests/core. The fuzz target checks that fragmentation makes no
// difference.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

#include "virtual_printer/model/printer_model.h"

namespace virtual_printer {
namespace {

struct PrinterFixture {
  explicit PrinterFixture(const PrinterSetup& setup = {}) : model(setup) {}

  // Connects the host if necessary.
  PrinterModel::Events Send(int host, const std::string& bytes) {
    model.Connect(host);
    return model.Receive(host, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(), now);
  }
  PrinterModel::Events Wait(int milliseconds) {
    now += std::chrono::milliseconds(milliseconds);
    return model.Advance(now);
  }

  PrinterModel model;
  Time now;
};

std::string V1(const std::string& line) { return "\x1B\x1C& V1 " + line + "\r\n"; }
std::string GsH(const std::string& body) {
  return "\x1D(H" + std::string({static_cast<char>(body.size()), '\0'}) + body;
}
std::string SetTask(const std::string& digits) { return V1("setval \"process_id\" \"" + digits + "\""); }
std::string SetKey(const std::string& record) { return V1("setkey") + record; }
std::string GetKey(const std::string& record) { return V1("getkey") + record; }
std::string SetWidth(const std::string& value) { return SetKey(std::string("\x01\xCC\x00\x02", 4) + value); }

std::string Number(std::size_t value, int size) {
  std::string text;
  AppendNumber(static_cast<std::uint32_t>(value), size, text);
  return text;
}
std::string Package(std::size_t index, const std::string& data, std::size_t area = 2048) {
  std::string package = "\xDD\xCC\xBB\xAA" + Number(index, 4) + Number(data.size(), 2) + data;
  package.resize(10 + area);
  return package +
         Number(std::accumulate(package.begin(), package.end(), std::size_t{0},
                                [](std::size_t sum, char byte) { return sum + static_cast<unsigned char>(byte); }),
                2);
}
std::string SegmentHeader(std::size_t length) { return "VEXO" + Number(length, 4) + std::string(68, 'h'); }

const std::string kClear = "\x1B\x1C&cl";
const std::string kClearRealTime = "\x10\x14\x08\x01\x03\x14\x01\x06\x02\x08";
const std::string kOn = V1("setval \"job_monitor\" \"on\"");
const std::string kOff = V1("setval \"job_monitor\" \"off\"");
const std::string kGsHOn = GsH("102");
const std::string kAskMonitoring = V1("getval \"job_monitor\"");
const std::string kAskStatus = V1("getval \"reprint_status\"");
const std::string kSave = V1("do \"save_param_zone\"");
const std::string kGetWidth = GetKey({"\x01\xCC\x00\x02", 4});
const std::string kReset = V1("do \"reset_printer\"");
const std::string kFileMode = "\x12\x46";
const std::string kFontMode = V1("do \"font_download_quick\"");
const std::string kFirmwareMode = V1("do \"dfu\"");
const std::string kLoaderMode = "\x1D\x75\x55\xAA";

using Lines = std::vector<std::string>;
const std::string kMonitoringOn = "setval \"job_monitor\" \"on\", by V1 reports";
const std::string kGsHMonitoringOn = "GS ( H, monitoring on, by 37 replies";
// Reports of type 259, whose last byte is the value, and of type 260, with four bytes of status.
const std::string kDone = "<-1B1C26205631207265706F7274030102000001";
const std::string kIsOff = "<-1B1C26205631207265706F7274030102000000";
const std::string kStatusZero = "<-1B1C26205631207265706F7274040105000000000000";

// Commands, their descriptions and the bytes of the answers.
const struct {
  const char* name;
  std::string sent;
  Lines expected;
} kExchanges[] = {
    {"set, read and save, with a value that looks like a line end",
     SetWidth("\r\n") + kGetWidth + kSave,
     {"setkey key 0x00CC = 2573", "<-01CC00", "getkey key 0x00CC", "<-0D0A", "do \"save_param_zone\"", "<-00"}},
    {"settings that are refused, which fails the next save only; questions that are not answered",
     SetKey({"\x01\xCC\x01\x02\x80\x02", 6}) + SetKey({"\x01\xCC\x00\x03\x01\x02\x03", 7}) + SetKey("") + kSave +
         kSave + GetKey({"\x01\xCD\x00\x02", 4}) + GetKey({"\x01\xCC\x00\x04", 4}) + GetKey(""),
     {"setkey key 0x01CC, 2 bytes (unknown key), refused", "setkey key 0x00CC, 3 bytes (wrong length), refused",
      "setkey without a record, refused", "do \"save_param_zone\"", "<-01", "do \"save_param_zone\"", "<-00",
      "getkey key 0x00CD (unknown key), not answered", "getkey key 0x00CC (wrong length), not answered",
      "getkey without a record, not answered"}},
    {"other verbs and actions, and print data that begins like commands",
     V1("setval \"tone\" \"on\"") + V1("do \"reset\x07\xC4\"") + V1("") + GsH("103") +
         "\x1B\x1C& V1 report\x1B\x1B\x1C&\x1B",
     {"setval \"tone\" \"on\" (not simulated)", "do \"reset\\x07\\xC4\" (not simulated)", " (not simulated)",
      "GS ( H, 3 bytes (not simulated)", "report (not simulated)", "print data, 5 bytes"}},
    {"lines abandoned for commands of each form",
     "\x1B\x1C& V1 do \"a" + kClear + "\x1B\x1C& V1 do \"b" + GsH("103") + "\x1B\x1C& V1 do \"c\"\n\r",
     {"unfinished command, 12 bytes", "clear tasks, 0 waiting", kDone, "unfinished command, 12 bytes",
      "GS ( H, 3 bytes (not simulated)", "unfinished command, 15 bytes"}},
    {"the longest line, and one too long",
     V1(std::string(247, 'y')) + V1(std::string(249, 'y')),
     {std::string(247, 'y') + " (not simulated)", "command without a line end, 256 bytes", "print data, 2 bytes"}},
    {"a record cut off takes its length of what follows",
     SetKey({"\x01\xCC\x00", 3}) + kGetWidth + kGetWidth,
     {"setkey key 0x00CC, 27 bytes (wrong length), refused", "print data, 10 bytes"}},
    {"an absurd length may hold a command",
     std::string("\x1D(H\x00\x01", 5) + "A\x1D(H",
     {"print data, 6 bytes", "print data, 3 bytes"}},
    {"reset takes one line feed and answers it",
     GsH("200") + "\n\n" + GsH("200") + "A" + GsH("200"),
     {"GS ( H, task numbering reset", "<-372400", "print data, 1 byte",
      "GS ( H, task numbering reset, no answer wanted", "print data, 1 byte",
      "GS ( H, task numbering reset, no answer wanted"}},
    {"reset and clear answer in the family of the monitoring",
     kClear + kClearRealTime + kOn + GsH("200") + "\n" + kClearRealTime + kGsHOn + GsH("200") + "\n" + kClear,
     {"clear tasks, 0 waiting", kDone, "clear tasks, 0 waiting", "<-372500", kMonitoringOn,
      "GS ( H, task numbering reset", kDone, "clear tasks, 0 waiting", kDone, kGsHMonitoringOn,
      "GS ( H, task numbering reset", "<-372400", "clear tasks, 0 waiting", "<-372500"}},
    {"questions are answered by V1 reports, and other values change nothing",
     kAskMonitoring + kOn + V1("setval \"job_monitor\" \"Off\"") + kAskMonitoring + kOff + kAskMonitoring + kGsHOn +
         kAskStatus,
     {"getval \"job_monitor\"", kIsOff, kMonitoringOn, "setval \"job_monitor\" \"Off\" (not simulated)",
      "getval \"job_monitor\"", kDone, "setval \"job_monitor\" \"off\"", "getval \"job_monitor\"", kIsOff,
      kGsHMonitoringOn, "getval \"reprint_status\"", kStatusZero}},
    {"network details, for the whole question only; paper",
     std::string("\x12") + "CE\x12" + "CEX\x12" + "CER" + V1("do \"print_feedform\""),
     {"print data, 7 bytes", "network details wanted", "<-000000000000000000FFFFFF00000000",
      "do \"print_feedform\", paper fed"}},
    {"task numbers are four digits",
     SetTask("00x7") + V1("setval \"process_id\" 0007") + GsH("00-007") + GsH("000007") + GsH("0000007"),
     {"setval \"process_id\" \"00x7\" (not four digits), ignored",
      "setval \"process_id\" 0007 (not four digits), ignored", "GS ( H, task number -007 (not four digits), ignored",
      "GS ( H, task number 0007", "GS ( H, 7 bytes (not simulated)"}},
};

TEST(Commands, AreUnderstoodAndAnsweredAndLeaveTheParserInStep) {
  for (const auto& row : kExchanges) {
    SCOPED_TRACE(row.name);
    PrinterFixture printer;
    Lines lines;
    for (const auto& [connection, direction, message] : printer.Send(1, row.sent + kGetWidth)) {
      std::string line = direction == WireEvent::Direction::kSent ? "<-" : message.text;
      for (std::size_t i = 0; i < message.bytes.size() && line.substr(0, 2) == "<-"; ++i) {
        line += HexText(message.bytes[i], 2);
      }
      lines.push_back(line);
    }
    const unsigned width = printer.model.State().current.print_width;
    Lines expected = row.expected;
    expected.insert(expected.end(), {"getkey key 0x00CC", "<-" + HexText(width & 0xFF, 2) + HexText(width >> 8, 2)});
    EXPECT_EQ(lines, expected);
  }
}

// An event for the printer.
using Action = std::function<PrinterModel::Events(PrinterFixture& printer)>;
Action Send(int host, const std::string& bytes) {
  return [=](PrinterFixture& printer) { return printer.Send(host, bytes); };
}
Action Wait(int milliseconds) {
  return [=](PrinterFixture& printer) { return printer.Wait(milliseconds); };
}
Action WaitUnnoticed(int milliseconds) {
  return [=](PrinterFixture& printer) -> PrinterModel::Events {
    return printer.now += std::chrono::milliseconds(milliseconds), PrinterModel::Events();
  };
}
Action Leave(int host) {
  return [=](PrinterFixture& printer) { return printer.model.Disconnect(host, printer.now); };
}

// Describes the result: `1> text` for data from host 1, `1< text` for data to it, then side effects. Commands and
// packages are omitted.
std::string Perform(const Action& action, PrinterFixture& printer) {
  std::string words;
  const auto add = [&](const std::string& text) { words += (words.empty() ? "" : ", ") + text; };
  for (const auto& [connection, direction, message] : action(printer)) {
    const bool sent = direction == WireEvent::Direction::kSent;
    if (sent || message.text.find("print data") == 0 || message.text.find("unfinished") == 0) {
      add(std::to_string(connection) + (sent ? "< " : "> ") + message.text);
    }
  }
  const SideEffects side_effects = printer.model.TakeSideEffects();
  for (const auto& [connection, download] : side_effects.completed) {
    add(std::to_string(connection) + " stored " + std::string(AsText(download.data)));
  }
  if (const auto& outage = side_effects.outage) {
    add("off for " + std::to_string(outage->duration.count()) + " ms, back as " +
        std::to_string(static_cast<int>(outage->back_as)));
  }
  return words;
}

struct Step {
  Action action;
  std::string expected = {};
};

PrinterSetup With(void (*change)(PrinterSetup& setup)) {
  PrinterSetup setup;
  change(setup);
  return setup;
}

const std::string kUnnumbered = "print data, 1 byte, job without a number";

const struct {
  const char* name;
  PrinterSetup setup;
  std::vector<Step> steps;
} kScenarios[] = {
    {"a job starts with its data and ends when it is printed; what fell due comes before the next answer",
     {},
     {{Send(1, SetTask("0007") + "x"), "1> print data, 1 byte"},
      {Send(1, kOn + SetTask("0007") + "Total"), "1> print data, 5 bytes, task 0007, 1< report 256: task 0007 started"},
      {Wait(100)},
      {Send(1, " 9.99"), "1> print data, 5 bytes, task 0007"},
      {WaitUnnoticed(500)},
      {Send(1, kAskStatus), "1< report 257: task 0007 ended, status 0x00000000, 1< report 260: status 0x00000000"}}},
    {"jobs are printed one after the other until they are cleared",
     {},
     {{Send(1, kGsHOn + GsH("000001") + "a" + GsH("000002") + "b" + GsH("000003") + "c"),
       "1> print data, 1 byte, task 0001, 1< reply 37 22: task 0001 started, 1> print data, 1 byte, task 0002, "
       "1> print data, 1 byte, task 0003"},
      {Wait(500), "1< reply 37 23: task 0001 ended, 1< reply 37 22: task 0002 started"},
      {Wait(499)},
      {Send(1, kClear), "1< reply 37 25: tasks cleared"},
      {Wait(9000), "1< reply 37 23: task 0002 ended"}}},
    {"a number is for the next job of its host, and forgotten with the monitoring and by a reset",
     {},
     {{Send(1, kOn + SetTask("0007") + GsH("000008"))},
      {Send(2, "x"), "2> " + kUnnumbered + ", 1< report 256: task 0000 started"},
      {Send(1, "x"), "1> print data, 1 byte, task 0008"},
      {Wait(300)},
      {Send(1, "x" + SetTask("0009") + kOff + kOn + "x"), "1> " + kUnnumbered + ", 1> " + kUnnumbered},
      {Send(1, SetTask("0009") + GsH("200") + "\nx"), "1< report 259: task numbering reset, 1> " + kUnnumbered}}},
    {"reports are on from the start, in the family that is forced",
     With([](PrinterSetup& setup) {
       setup.monitoring = ReportFamily::kV1;
       setup.forced_family = ReportFamily::kGsH;
     }),
     {{Send(1, "x"), "1> " + kUnnumbered + ", 1< reply 37 22: task 0000 started"},
      {Wait(500), "1< reply 37 23: task 0000 ended"},
      {Send(1, kOn + "x"), "1> " + kUnnumbered + ", 1< reply 37 22: task 0000 started"}}},
    {"reports come in the family of each host",
     {},
     {{Send(1, kOn)},
      {Send(2, kGsHOn)},
      {Send(3, "x"), "3> " + kUnnumbered + ", 1< report 256: task 0000 started, 2< reply 37 22: task 0000 started"}}},
    {"the next connection inherits the reports of a lost one, until they are switched off",
     {},
     {{Send(1, kGsHOn + GsH("000007") + "x"), "1> print data, 1 byte, task 0007, 1< reply 37 22: task 0007 started"},
      {Leave(1)},
      {Send(4, "")},
      {Send(5, "")},
      {Wait(500), "4< reply 37 23: task 0007 ended"},
      {Send(4, GsH("100"))},
      {Leave(4)},
      {Send(6, "x"), "6> print data, 1 byte"}}},
    {"the host of a job gets a V2 answer while it is connected",
     With([](PrinterSetup& setup) { setup.task_over = true; }),
     {{Send(1, SetTask("0007") + "x"), "1> print data, 1 byte, task 0007"},
      {Send(2, kOn + "y"), "2> " + kUnnumbered},
      {Wait(500),
       "2< report 257: task 0007 ended, status 0x00000000, 1< V2 answer: task=0007;state=ok, "
       "2< report 256: task 0000 started"},
      {Leave(2)},
      {Wait(500)}}},
    {"connections share the settings but not their streams; a restart goes back to the saved settings",
     {},
     {{Send(1, SetKey({"\x01\xCD\x00\x02\x80\x02", 6}) + SetWidth("\x80\x02") + kSave.substr(0, 12)),
       "1< setkey key 0x00CC acknowledged"},
      {Send(2, kGetWidth), "2< key 0x00CC = 640"},
      {Send(1, kSave.substr(12)), "1< not saved, a setting was refused"},
      {Send(2, kReset + kGetWidth), "off for 300 ms, back as 0"},
      {Send(4, kGetWidth + SetWidth("\x80\x02") + kSave + SetWidth("\x01\x02") + kReset),
       "4< key 0x00CC = 576, 4< setkey key 0x00CC acknowledged, 4< parameter zone saved, "
       "4< setkey key 0x00CC acknowledged, off for 300 ms, back as 0"},
      {Send(5, kGetWidth), "5< key 0x00CC = 640"}}},
    {"what a connection leaves unfinished",
     {},
     {{Send(1, kGetWidth.substr(0, 17))},
      {Send(2, kClear.substr(0, 4))},
      {Leave(1), "1> unfinished command, 17 bytes"},
      {Leave(2), "2> print data, 4 bytes"}}},
    {"file of two packages behind print data; packages out of order, cut off, overfull and repeated",
     {},
     {{Send(1, "Total\n\x12\x46"), "1> print data, 6 bytes, 1< ready for packages"},
      {Send(1, Package(1, "b")), "1< package refused"},
      {Send(1, Package(0, "a").substr(0, 900))},
      {Wait(1000), "1< package refused"},
      {Send(1, Package(0, std::string(2049, 'a'))), "1< package refused"},
      {Send(1, Package(0, "a") + Package(0, "a")), "1< package 0 acknowledged, 1< package 0 acknowledged"},
      {Send(1, Package(1, "b").substr(0, 3))},
      {Send(1, Package(1, "b").substr(3)), "1< package 1 acknowledged"},
      {Send(1, kReset), "1 stored ab, off for 300 ms, back as 0"}}},
    {"files begun again, abandoned for another command, and lost with their connection",
     {},
     {{Send(1, kFileMode + Package(0, "a") + kFileMode + Package(0, "b") + kOff + kReset),
       "1< ready for packages, 1< package 0 acknowledged, 1< ready for packages, 1< package 0 acknowledged, "
       "off for 300 ms, back as 0"},
      {Send(4, kFileMode + Package(0, "a")), "4< ready for packages, 4< package 0 acknowledged"},
      {Leave(4)},
      {Send(5, kReset), "off for 300 ms, back as 0"}}},
    {"font of one full package, first without its end; the first one is completed by its checksum or by a pause",
     {},
     {{Send(1, kFontMode + Package(0, "abc", 3)), "1< ready for packages, 1< package 0 acknowledged"},
      {Send(1, kReset), "off for 300 ms, back as 0"},
      {Send(4, kFontMode + Package(0, "abc", 8)), "4< ready for packages"},
      {Wait(100), "4< package 0 acknowledged"},
      {Send(4, "^END" + kReset), "4 stored abc, off for 300 ms, back as 0"}}},
    {"loaders come and go with their own delays, and know only their download",
     With([](PrinterSetup& setup) {
       setup.downloads.loader_delay = std::chrono::milliseconds(70);
       setup.downloads.restart_time = std::chrono::milliseconds(40);
     }),
     {{Send(1, kLoaderMode + kFileMode), "off for 70 ms, back as 1"},
      {Send(4, kLoaderMode + kFileMode + kGetWidth + "1\x04" + "1"), "4< ready, 4< refused, 4< ready"},
      {Send(4, kReset), "off for 40 ms, back as 0"}}},
    {"firmware over two connections, with an absurd and an empty body; a lost body takes the image with it",
     {},
     {{Send(1, kFirmwareMode), "off for 300 ms, back as 2"},
      {Send(4, SegmentHeader(0xFFFFFFFF) + SegmentHeader(3) + "abc"),
       "4< part 0 refused, 4< part 0 accepted, 4< part 1 accepted"},
      {Leave(4)},
      {Send(5, SegmentHeader(0) + kReset), "5< part 2 accepted, 5< part 3 accepted, 5 stored " + SegmentHeader(3) +
                                               "abc" + SegmentHeader(0) + ", off for 300 ms, back as 0"},
      {Send(6, kFirmwareMode), "off for 300 ms, back as 2"},
      {Send(7, SegmentHeader(3) + "ab"), "7< part 0 accepted"},
      {Leave(7)},
      {Send(8, kReset), "off for 300 ms, back as 0"}}},
};

TEST(Printer, GoesThroughScenarios) {
  for (const auto& scenario : kScenarios) {
    SCOPED_TRACE(scenario.name);
    PrinterFixture printer(scenario.setup);
    for (const Step& step : scenario.steps) {
      EXPECT_EQ(Perform(step.action, printer), step.expected) << "step " << &step - scenario.steps.data();
    }
  }
}

// Each row starts with a job whose first data has just arrived.
TEST(Job, IsCompleteAfter) {
  const struct {
    const char* name;
    std::vector<Action> actions;
    int deadline;
  } rows[] = {
      {"nothing but a pause", {}, 200},
      {"the next task number", {Send(1, SetTask("0008"))}, 50},
      {"an invalid task number", {Send(1, SetTask("8"))}, 200},
      {"monitoring switched off", {Send(1, kOff)}, 50},
      {"the end of the connection", {Leave(1)}, 50},
      {"more data in time", {Wait(150), Send(1, "y")}, 200},
      {"data of another host", {Send(2, "y")}, 200},
      {"a command that does not concern jobs", {Send(1, V1("do \"print_feedform\""))}, 200},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    PrinterFixture printer(With([](PrinterSetup& setup) { setup.job_times.printing = std::chrono::milliseconds(50); }));
    printer.Send(2, kOn);
    printer.Send(1, SetTask("0007") + "x");
    for (const Action& action : row.actions) {
      action(printer);
    }
    EXPECT_EQ(printer.model.NextDeadline(), printer.now + std::chrono::milliseconds(row.deadline));
    EXPECT_EQ(Perform(Wait(row.deadline), printer).find("2< report 257: task 0007 ended"), 0U);
  }
}

}  // namespace
}  // namespace virtual_printer
