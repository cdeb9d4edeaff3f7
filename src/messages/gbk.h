// GBK, code page 936: the encoding that hosts expect messages in.
#ifndef VEXO_MESSAGES_GBK_H_
#define VEXO_MESSAGES_GBK_H_

#include <cstdint>

namespace vexo {

// Converts UTF-8 to GBK with a terminating zero and returns the number of bytes before it; never more bytes than the
// UTF-8 text has. Knows ASCII and the characters of the library's messages; any other becomes "?".
uint32_t CopyUtf8AsGbk(const char* utf8, char* gbk);

}  // namespace vexo

#endif  // VEXO_MESSAGES_GBK_H_
