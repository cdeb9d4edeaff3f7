// Texts in fixed buffers: the records of the port layer hold URIs and paths of at most 255 characters.
#ifndef VEXO_PORT_BOUNDED_TEXT_H_
#define VEXO_PORT_BOUNDED_TEXT_H_

#include <cstddef>

namespace vexo {

// Appends text pieces to a buffer; a piece that does not fit is left out whole and makes Append return false.
class BoundedText {
 public:
  // `capacity` counts the terminating zero. With a capacity of 0 nothing is ever written.
  BoundedText(char* buffer, size_t capacity);

  bool Append(const char* piece);

 private:
  char* buffer_;
  size_t capacity_;
  size_t length_ = 0;
};

// Copies at most capacity - 1 characters and terminates the copy.
void CopyText(char* buffer, size_t capacity, const char* text);

// Length of a text, but at most `limit`.
size_t BoundedLength(const char* text, size_t limit);

// Upper-cases the ASCII letters; the letters of other code pages stay, whatever locale the host has set.
void UpperCaseAscii(char* text);
char UpperCaseAscii(char c);

}  // namespace vexo

#endif  // VEXO_PORT_BOUNDED_TEXT_H_
