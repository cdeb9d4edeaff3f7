#include "protocol/v1_command.h"

#include "protocol/hex_text.h"

namespace vexo {
namespace {

constexpr char kSetKeyLine[] = "1b 1c 26 20 56 31 20 73 65 74 6B 65 79 0D 0A";
constexpr char kGetKeyLine[] = "1b 1c 26 20 56 31 20 67 65 74 6B 65 79 0D 0A";
constexpr char kSetValStart[] = "1B 1C 26 20 56 31 20 73 65 74 76 61 6C 20 22";
constexpr char kGetValStart[] = "1B 1C 26 20 56 31 20 67 65 74 76 61 6C 20 22";
constexpr char kDoStart[] = "1B 1C 26 20 56 31 20 64 6f 20 22";
constexpr char kReport[] = "1B 1C 26 20 56 31 20 72 65 70 6F 72 74";
constexpr char kBetweenTexts[] = "22 20 22";
constexpr char kTextLineEnd[] = "22 0D 0A";

constexpr uint8_t kOneEntry = 1;

const Bytes kReportCommand = HexTextToBytes(kReport);

Bytes BuildTextCommand(const char* start, std::string_view text) {
  Bytes command = HexTextToBytes(start);
  Append(&command, text);
  Append(&command, HexTextToBytes(kTextLineEnd));
  return command;
}

}  // namespace

Bytes BuildSetKeyCommand(uint8_t key_low, uint8_t key_high, const Bytes& value) {
  Bytes command = HexTextToBytes(kSetKeyLine);
  command.push_back(kOneEntry);
  command.push_back(key_low);
  command.push_back(key_high);
  command.push_back(static_cast<uint8_t>(value.size() & 0xFF));
  Append(&command, value);
  return command;
}

Bytes BuildGetKeyCommand(uint8_t key_low, uint8_t key_high, uint8_t value_length) {
  Bytes command = HexTextToBytes(kGetKeyLine);
  for (const uint8_t byte : {kOneEntry, key_low, key_high, value_length}) {
    command.push_back(byte);
  }
  return command;
}

Bytes BuildSetValCommand(std::string_view key, std::string_view value) {
  Bytes command = HexTextToBytes(kSetValStart);
  Append(&command, key);
  Append(&command, HexTextToBytes(kBetweenTexts));
  Append(&command, value);
  Append(&command, HexTextToBytes(kTextLineEnd));
  return command;
}

Bytes BuildGetValCommand(std::string_view key) { return BuildTextCommand(kGetValStart, key); }

Bytes BuildDoCommand(std::string_view action) { return BuildTextCommand(kDoStart, action); }

const Bytes& ReportCommand() { return kReportCommand; }

}  // namespace vexo
