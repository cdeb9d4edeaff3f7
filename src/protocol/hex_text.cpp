#include "protocol/hex_text.h"

#include <cstddef>
#include <string_view>

namespace vexo {
namespace {

// Removed one after the other in this order: "0x" is only recognisable once the blanks are gone, and before the letters
// change case.
constexpr std::string_view kSeparators[] = {",", ";", "|", " ", "0x", "\r", "\n"};

void RemoveAll(std::string* text, std::string_view separator) {
  size_t kept = 0;
  for (size_t i = 0; i < text->size();) {
    if (text->compare(i, separator.size(), separator) == 0) {
      i += separator.size();
    } else {
      (*text)[kept++] = (*text)[i++];
    }
  }
  text->resize(kept);
}

unsigned DigitValue(char c) {
  const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  const auto code = static_cast<unsigned char>(lower);
  return code < 58U ? code - 48U : code - 87U;
}

}  // namespace

Bytes HexTextToBytes(std::string&& text) {
  for (const std::string_view separator : kSeparators) {
    RemoveAll(&text, separator);
  }
  Bytes bytes;
  bytes.reserve(text.size() / 2);
  for (size_t i = 0; i + 1 < text.size(); i += 2) {
    bytes.push_back(LowByte(16U * DigitValue(text[i]) + DigitValue(text[i + 1])));
  }
  text.clear();
  return bytes;
}

}  // namespace vexo
