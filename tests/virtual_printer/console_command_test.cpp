#include "virtual_printer/console_command.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace virtual_printer {
namespace {

using Kind = ConsoleCommand::Kind;

TEST(ConsoleCommand, IsUnderstood) {
  const struct {
    const char* line;
    ConsoleCommand expected;
  } rows[] = {
      {"start 7", {Kind::kStart, 7, {}, false}},
      {"  start\t0007 \r", {Kind::kStart, 7, {}, false}},
      {"end 9999", {Kind::kEnd, 9999, {}, false}},
      {"end 0 4294967295", {Kind::kEnd, 0, 0xFFFFFFFF, false}},
      {"end 1 0xFfFfFfFf", {Kind::kEnd, 1, 0xFFFFFFFF, false}},
      {"state 8", {Kind::kState, 8, {}, false}},
      {"status 0x10", {Kind::kStatus, 16, {}, false}},
      {"garbage", {Kind::kGarbage, 16, {}, false}},
      {"garbage 65536", {Kind::kGarbage, 65536, {}, false}},
      {"split on", {Kind::kSplit, 0, {}, true}},
      {"silent off", {Kind::kSilent, 0, {}, false}},
      {"drop", {Kind::kDrop, 0, {}, false}},
      {"help", {Kind::kHelp, 0, {}, false}},
      {"quit", {Kind::kQuit, 0, {}, false}},
  };
  for (const auto& row : rows) {
    std::string complaint;
    const auto command = ParseConsoleLine(row.line, &complaint);
    ASSERT_TRUE(command) << row.line;
    EXPECT_EQ(command->kind, row.expected.kind) << row.line;
    EXPECT_EQ(command->number, row.expected.number) << row.line;
    EXPECT_EQ(command->value, row.expected.value) << row.line;
    EXPECT_EQ(command->on, row.expected.on) << row.line;
    EXPECT_EQ(complaint, "");
  }
}

TEST(ConsoleCommand, IsRefusedWithAWord) {
  const struct {
    const char* line;
    const char* complaint;
  } rows[] = {
      {"", ""},
      {" \r", ""},
      {"stop", "unknown command; help shows all"},
      {"Start 7", "unknown command; help shows all"},
      {"start", "usage: start N"},
      {"start 10000", "usage: start N"},
      {"start -1", "usage: start N"},
      {"start 7 8", "usage: start N"},
      {"end 7 8 9", "usage: end N [VALUE]"},
      {"end 7 4294967296", "usage: end N [VALUE]"},
      {"end 7 0x", "usage: end N [VALUE]"},
      {"status 99999999999999999999", "usage: status VALUE"},
      {"garbage 65537", "usage: garbage [BYTES]"},
      {"split", "usage: split on|off"},
      {"silent maybe", "usage: silent on|off"},
      {"drop all", "usage: drop"},
  };
  for (const auto& row : rows) {
    std::string complaint;
    EXPECT_FALSE(ParseConsoleLine(row.line, &complaint)) << row.line;
    EXPECT_EQ(complaint, row.complaint) << row.line;
  }
}

TEST(ConsoleCommand, HelpNamesEach) {
  for (const char* word : {"start N", "end N [VALUE]", "state N", "status VALUE", "garbage [BYTES]", "split on|off",
                           "silent on|off", "drop", "help", "quit"}) {
    EXPECT_NE(("\n" + ConsoleHelp()).find("\n" + std::string(word) + " "), std::string::npos) << word;
  }
}

}  // namespace
}  // namespace virtual_printer
