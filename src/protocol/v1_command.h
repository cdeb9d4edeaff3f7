// The printer's text command protocol, version 1. Every command begins with ESC FS "& V1 ", followed by a verb:
//
//   setkey  CR LF, then a binary record: entries (1), key (16 bits, low byte first), value length (8 bits), value
//   getkey  CR LF, then a binary record: entries (1), key (16 bits, low byte first), value length (8 bits)
//   setval  "KEY" "VALUE" CR LF
//   getval  "KEY" CR LF
//   do      "ACTION" CR LF
//   report  nothing more: how the printer begins each status report
//
// Compatibility: keys, values and actions are sent byte for byte, without quoting or escaping, as the printers' parser
// expects them; they must not contain a double quote.
#ifndef VEXO_PROTOCOL_V1_COMMAND_H_
#define VEXO_PROTOCOL_V1_COMMAND_H_

#include <cstdint>
#include <string_view>

#include "protocol/bytes.h"

namespace vexo {

// Compatibility: a value of more than 255 bytes is sent whole, but its length byte holds only the low 8 bits of its
// length.
Bytes BuildSetKeyCommand(uint8_t key_low, uint8_t key_high, const Bytes& value);
Bytes BuildGetKeyCommand(uint8_t key_low, uint8_t key_high, uint8_t value_length);
Bytes BuildSetValCommand(std::string_view key, std::string_view value);
Bytes BuildGetValCommand(std::string_view key);
Bytes BuildDoCommand(std::string_view action);

// The 13 bytes that every status report begins with. Built once, when the library is loaded.
const Bytes& ReportCommand();

// do "save_param_zone": the printer stores its parameter zone and answers with one byte, 0 for success.
inline constexpr std::string_view kSaveParamZoneCommand = "\x1b\x1c& V1 do \"save_param_zone\"\r\n";

}  // namespace vexo

#endif  // VEXO_PROTOCOL_V1_COMMAND_H_
