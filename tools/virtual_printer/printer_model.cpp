#include "virtual_printer/printer_model.h"

#include <string_view>
#include <utility>

#include "virtual_printer/hex_text.h"

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

std::string CountOfBytes(std::size_t count) { return std::to_string(count) + (count == 1 ? " byte" : " bytes"); }

std::string KeyText(std::uint16_t key) { return "key 0x" + HexText(key, 4); }

// A host may send any byte in a line; a trace that is read on a terminal must not.
std::string Printable(std::string_view text) {
  std::string printable;
  for (const char character : text) {
    if (character >= ' ' && character <= '~') {
      printable += character;
    } else {
      printable += "\\x" + HexText(static_cast<unsigned char>(character), 2);
    }
  }
  return printable;
}

std::string LineText(const Command& command) {
  return Printable(command.arguments.empty() ? command.verb : command.verb + ' ' + command.arguments);
}

}  // namespace

std::vector<WireEvent> PrinterModel::Receive(const std::uint8_t* data, std::size_t size) {
  return React(parser_.Feed(data, size));
}

std::vector<WireEvent> PrinterModel::Finish() { return React(parser_.Finish()); }

std::vector<WireEvent> PrinterModel::React(const std::vector<Frame>& frames) {
  std::vector<WireEvent> events;
  for (const Frame& frame : frames) {
    Reaction reaction = ReactTo(frame);
    events.push_back({WireEvent::Direction::kReceived, frame.bytes, std::move(reaction.received)});
    if (!reaction.answer.empty()) {
      events.push_back({WireEvent::Direction::kSent, std::move(reaction.answer), std::move(reaction.sent)});
    }
  }
  return events;
}

PrinterModel::Reaction PrinterModel::ReactTo(const Frame& frame) {
  const std::string length = CountOfBytes(frame.bytes.size());
  switch (frame.kind) {
    case Frame::Kind::kCommand:
      return Execute(frame.command);
    case Frame::Kind::kUnfinishedCommand:
      return {"unfinished command, " + length};
    case Frame::Kind::kOverlongCommand:
      return {"command without a line end, " + length};
    case Frame::Kind::kPrintData:
      break;
  }
  state_.print_data_bytes += frame.bytes.size();
  return {"print data, " + length};
}

PrinterModel::Reaction PrinterModel::Execute(const Command& command) {
  struct VerbHandler {
    std::string_view verb;
    Reaction (PrinterModel::*execute)(const Command& command);
  };
  static constexpr VerbHandler kVerbs[] = {
      {"setkey", &PrinterModel::SetKey},
      {"getkey", &PrinterModel::GetKey},
      {"do", &PrinterModel::Do},
  };
  for (const VerbHandler& handler : kVerbs) {
    if (handler.verb == command.verb) {
      return (this->*handler.execute)(command);
    }
  }
  return {LineText(command) + " (not simulated)"};
}

PrinterModel::Reaction PrinterModel::SetKey(const Command& command) {
  if (command.record.empty()) {
    return RefuseSetting(LineText(command) + " without a record");
  }
  const std::uint16_t key = RecordKey(command.record);
  const std::size_t length = RecordLength(command.record);
  const Setting* setting = FindSetting(key);
  if (setting == nullptr || length != kSettingLength) {
    const char* fault = setting == nullptr ? " (unknown key)" : " (wrong length)";
    return RefuseSetting("setkey " + KeyText(key) + ", " + CountOfBytes(length) + fault);
  }
  const std::uint16_t value = TwoBytesAt(command.record, CommandParser::kRecordHeaderLength);
  state_.current.*setting->value = value;
  // The acknowledgement repeats the head of the record.
  return {"setkey " + KeyText(key) + " = " + std::to_string(value),
          {command.record[0], LowByte(key), HighByte(key)},
          "setkey " + KeyText(key) + " acknowledged"};
}

// Hosts do not judge the acknowledgement of a setkey, only the answer to the save_param_zone that follows. So that they
// learn of the refusal in time, the one is left out and the other turns negative.
PrinterModel::Reaction PrinterModel::RefuseSetting(std::string received) {
  setting_refused_ = true;
  return {std::move(received) + ", refused"};
}

PrinterModel::Reaction PrinterModel::GetKey(const Command& command) {
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
  return {received, {LowByte(value), HighByte(value)}, KeyText(key) + " = " + std::to_string(value)};
}

PrinterModel::Reaction PrinterModel::Do(const Command& command) {
  struct ActionHandler {
    std::string_view quoted_action;
    Reaction (PrinterModel::*execute)(const Command& command);
  };
  static constexpr ActionHandler kActions[] = {
      {"\"save_param_zone\"", &PrinterModel::SaveParameterZone},
  };
  for (const ActionHandler& handler : kActions) {
    if (handler.quoted_action == command.arguments) {
      return (this->*handler.execute)(command);
    }
  }
  return {LineText(command) + " (not simulated)"};
}

PrinterModel::Reaction PrinterModel::SaveParameterZone(const Command& command) {
  if (std::exchange(setting_refused_, false)) {
    return {LineText(command), {kNotSaved}, "not saved, a setting was refused"};
  }
  state_.saved = state_.current;
  return {LineText(command), {kSaved}, "parameter zone saved"};
}

}  // namespace virtual_printer
