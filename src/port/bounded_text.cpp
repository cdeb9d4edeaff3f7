#include "port/bounded_text.h"

#include <cstring>

namespace vexo {

BoundedText::BoundedText(char* buffer, size_t capacity) : buffer_(buffer), capacity_(capacity) {
  if (capacity_ > 0) {
    buffer_[0] = '\0';
  }
}

bool BoundedText::Append(const char* piece) {
  const size_t piece_length = std::strlen(piece);
  if (length_ + piece_length >= capacity_) {
    return false;
  }
  std::memcpy(buffer_ + length_, piece, piece_length + 1);
  length_ += piece_length;
  return true;
}

void CopyText(char* buffer, size_t capacity, const char* text) {
  size_t length = 0;
  while (length + 1 < capacity && text[length] != '\0') {
    buffer[length] = text[length];
    ++length;
  }
  buffer[length] = '\0';
}

size_t BoundedLength(const char* text, size_t limit) {
  const void* const end = std::memchr(text, '\0', limit);
  return end != nullptr ? static_cast<size_t>(static_cast<const char*>(end) - text) : limit;
}

char UpperCaseAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

void UpperCaseAscii(char* text) {
  for (; *text != '\0'; ++text) {
    *text = UpperCaseAscii(*text);
  }
}

}  // namespace vexo
