// Hexadecimal text, the notation of the command templates.
#ifndef VEXO_PROTOCOL_HEX_TEXT_H_
#define VEXO_PROTOCOL_HEX_TEXT_H_

#include <string>

#include "protocol/bytes.h"

namespace vexo {

// Converts text such as "1b 1C,0x26" into bytes and empties it. Blanks, commas, semicolons, bars, "0x" and line ends
// are separators; a single digit at the end is dropped. Digits are not validated: pass correct templates only.
Bytes HexTextToBytes(std::string&& text);

}  // namespace vexo

#endif  // VEXO_PROTOCOL_HEX_TEXT_H_
