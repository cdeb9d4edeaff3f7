// Strings in fixed buffers: the records of the port layer hold URIs and paths of at most 255 characters.
#ifndef VEXO_PORT_BOUNDED_TEXT_H_
#define VEXO_PORT_BOUNDED_TEXT_H_

#include <cstddef>

namespace vexo {

// Appends strings to a buffer. Append returns false, and appends nothing, when the piece does not fit.
class BoundedText {
 public:
  // `capacity` includes the terminating zero. With a capacity of 0 nothing is ever written.
  BoundedText(char* buffer, size_t capacity);

  bool Append(const char* piece);

 private:
  char* buffer_;
  size_t capacity_;
  size_t length_ = 0;
};

// Copies at most capacity - 1 characters and terminates the copy.
void CopyText(char* buffer, size_t capacity, const char* text);

// Returns the length of a string, but at most `limit`.
size_t BoundedLength(const char* text, size_t limit);

// Upper-case ASCII letters only, regardless of the host's locale.
void UpperCaseAscii(char* text);
char UpperCaseAscii(char c);

}  // namespace vexo

#endif  // VEXO_PORT_BOUNDED_TEXT_H_
