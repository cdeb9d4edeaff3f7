#include "virtual_printer/model/key_settings.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "virtual_printer/wire/hex_text.h"
#include "virtual_printer/wire/trace_words.h"

namespace virtual_printer {
namespace {

constexpr std::uint8_t kSaved = 0x00;
constexpr std::uint8_t kNotSaved = 0x01;

// A setting that hosts reach by its key number. All of them are two bytes long on the wire, low byte first.
struct Setting {
  std::uint16_t key;
  std::uint16_t ParameterZone::*value;
};

constexpr std::size_t kSettingLength = 2;

constexpr Setting kSettings[] = {
    {0x00CC, &ParameterZone::print_width},
};

const Setting* FindSetting(std::uint16_t key) {
  for (const Setting& setting : kSettings) {
    if (setting.key == key) {
      return &setting;
    }
  }
  return nullptr;
}

std::uint8_t LowByte(std::uint16_t value) { return static_cast<std::uint8_t>(value & 0xFF); }
std::uint8_t HighByte(std::uint16_t value) { return static_cast<std::uint8_t>(value >> 8); }

std::uint16_t TwoBytesAt(const Bytes& bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(bytes[offset] | (bytes[offset + 1] << 8));
}

std::uint16_t RecordKey(const Bytes& record) { return TwoBytesAt(record, 1); }
std::size_t RecordLength(const Bytes& record) { return record[3]; }

std::string KeyText(std::uint16_t key) { return "key 0x" + HexText(key, 4); }

}  // namespace

std::optional<Reaction> KeySettings::Execute(const Command& command) {
  if (command.verb == "setkey") {
    return SetKey(command);
  }
  if (command.verb == "getkey") {
    return GetKey(command);
  }
  if (command.verb == "do" && command.arguments == "\"save_param_zone\"") {
    return SaveParameterZone(command);
  }
  return std::nullopt;
}

Reaction KeySettings::SetKey(const Command& command) {
  if (command.record.empty()) {
    return Refuse(LineText(command) + " without a record");
  }
  const std::uint16_t key = RecordKey(command.record);
  const std::size_t length = RecordLength(command.record);
  const Setting* setting = FindSetting(key);
  if (setting == nullptr || length != kSettingLength) {
    const char* fault = setting == nullptr ? " (unknown key)" : " (wrong length)";
    return Refuse("setkey " + KeyText(key) + ", " + CountOfBytes(length) + fault);
  }
  const std::uint16_t value = TwoBytesAt(command.record, CommandParser::kRecordHeaderLength);
  state_.current.*setting->value = value;
  // The acknowledgement repeats the head of the record.
  return {"setkey " + KeyText(key) + " = " + std::to_string(value),
          {{command.record[0], LowByte(key), HighByte(key)}, "setkey " + KeyText(key) + " acknowledged"}};
}

// Hosts do not judge the acknowledgement of a setkey, only the answer to the save_param_zone that follows. So that they
// learn of the refusal in time, the one is left out and the other turns negative.
Reaction KeySettings::Refuse(std::string received) {
  refused_ = true;
  return {std::move(received) + ", refused"};
}

Reaction KeySettings::GetKey(const Command& command) const {
  if (command.record.empty()) {
    return {LineText(command) + " without a record, not answered"};
  }
  const std::uint16_t key = RecordKey(command.record);
  const std::string received = "getkey " + KeyText(key);
  const Setting* setting = FindSetting(key);
  if (setting == nullptr) {
    return {received + " (unknown key), not answered"};
  }
  if (RecordLength(command.record) != kSettingLength) {
    return {received + " (wrong length), not answered"};
  }
  const std::uint16_t value = state_.current.*setting->value;
  return {received, {{LowByte(value), HighByte(value)}, KeyText(key) + " = " + std::to_string(value)}};
}

Reaction KeySettings::SaveParameterZone(const Command& command) {
  if (std::exchange(refused_, false)) {
    return {LineText(command), {{kNotSaved}, "not saved, a setting was refused"}};
  }
  state_.saved = state_.current;
  return {LineText(command), {{kSaved}, "parameter zone saved"}};
}

}  // namespace virtual_printer
