// Hexadecimal text, the form in which command templates are kept.
#ifndef VEXO_PROTOCOL_HEX_TEXT_H_
#define VEXO_PROTOCOL_HEX_TEXT_H_

#include <string>

#include "protocol/bytes.h"

namespace vexo {

// Turns "1b 1C,0x26" and the like into bytes, and leaves the text empty. Blanks, commas, semicolons, bars, "0x" and
// line ends separate; a last single digit is dropped. Digits are not checked: pass correct templates only.
Bytes HexTextToBytes(std::string&& text);

}  // namespace vexo

#endif  // VEXO_PROTOCOL_HEX_TEXT_H_
