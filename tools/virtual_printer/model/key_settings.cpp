#include "virtual_printer/model/key_settings.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace virtual_printer {
namespace {

constexpr std::uint8_t kSaved = 0x00;
constexpr std::uint8_t kNotSaved = 0x01;

// Settings have two bytes on the wire.
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

std::uint16_t ReadUint16(const std::uint8_t* data) { return static_cast<std::uint16_t>(ReadNumber(data, 2)); }

Bytes Uint16Bytes(std::uint16_t value) {
  Bytes bytes;
  AppendNumber(value, 2, bytes);
  return bytes;
}

std::uint16_t RecordKey(const Bytes& record) { return ReadUint16(&record[1]); }
std::size_t RecordLength(const Bytes& record) { return record[3]; }

std::string KeyText(std::uint16_t key) { return "key 0x" + HexText(key, 4); }

}  // namespace

std::optional<CommandResult> KeySettings::Execute(const Command& command) {
  if (command.verb == "setkey") {
    return SetKey(command);
  }
  if (command.verb == "getkey") {
    return GetKey(command);
  }
  if (command.IsV1("do", "\"save_param_zone\"")) {
    return SaveParameterZone(command);
  }
  return std::nullopt;
}

CommandResult KeySettings::SetKey(const Command& command) {
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
  const std::uint16_t value = ReadUint16(&command.record[CommandParser::kRecordHeaderLength]);
  state_.current.*setting->value = value;
  // The acknowledgement repeats the record's count and key.
  return {"setkey " + KeyText(key) + " = " + std::to_string(value),
          {{command.record.begin(), command.record.begin() + 3}, "setkey " + KeyText(key) + " acknowledged"}};
}

// Hosts ignore the acknowledgement of a setkey and check only the answer to the save_param_zone behind it. So a refused
// setkey is not acknowledged, and the save_param_zone fails.
CommandResult KeySettings::Refuse(std::string description) {
  refused_ = true;
  return {std::move(description) + ", refused"};
}

CommandResult KeySettings::GetKey(const Command& command) const {
  if (command.record.empty()) {
    return {LineText(command) + " without a record, not answered"};
  }
  const std::uint16_t key = RecordKey(command.record);
  const std::string description = "getkey " + KeyText(key);
  const Setting* setting = FindSetting(key);
  if (setting == nullptr) {
    return {description + " (unknown key), not answered"};
  }
  if (RecordLength(command.record) != kSettingLength) {
    return {description + " (wrong length), not answered"};
  }
  const std::uint16_t value = state_.current.*setting->value;
  return {description, {Uint16Bytes(value), KeyText(key) + " = " + std::to_string(value)}};
}

CommandResult KeySettings::SaveParameterZone(const Command& command) {
  if (std::exchange(refused_, false)) {
    return {LineText(command), {{kNotSaved}, "not saved, a setting was refused"}};
  }
  state_.saved = state_.current;
  return {LineText(command), {{kSaved}, "parameter zone saved"}};
}

}  // namespace virtual_printer
