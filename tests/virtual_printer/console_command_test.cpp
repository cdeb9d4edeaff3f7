#include "virtual_printer/app/console_command.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace virtual_printer {
namespace {

using Kind = ConsoleCommand::Kind;

TEST(ConsoleCommand, IsUnderstoodOrRefusedWithAWord) {
  const struct {
    const char* line;
    std::optional<ConsoleCommand> expected;
    const char* complaint = "";
  } rows[] = {
      {"  start\t0007 \r", {{Kind::kStart, 7, {}, false}}},
      {"status 0xfF", {{Kind::kStatus, 255, {}, false}}},
      {"garbage 65536", {{Kind::kGarbage, 65536, {}, false}}},
      {"split on", {{Kind::kSplit, 0, {}, true}}},
      {" \r", {}},
      {"Start 7", {}, "unknown command; help shows all"},
      {"end 7 4294967296", {}, "usage: end N [VALUE]"},
      {"garbage 65537", {}, "usage: garbage [BYTES]"},
      {"silent maybe", {}, "usage: silent on|off"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    std::string complaint;
    const auto command = ParseConsoleLine(row.line, &complaint);
    EXPECT_EQ(complaint, row.complaint);
    ASSERT_EQ(command.has_value(), row.expected.has_value());
    if (command) {
      EXPECT_EQ(command->kind, row.expected->kind);
      EXPECT_EQ(command->number, row.expected->number);
      EXPECT_EQ(command->value, row.expected->value);
      EXPECT_EQ(command->on, row.expected->on);
    }
  }
}

}  // namespace
}  // namespace virtual_printer
