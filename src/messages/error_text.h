// The message text of each result code, in English and Chinese.
#ifndef VEXO_MESSAGES_ERROR_TEXT_H_
#define VEXO_MESSAGES_ERROR_TEXT_H_

#include <cstdint>
#include <string>

namespace vexo {

// Large enough for every text with its terminating zero.
inline constexpr uint32_t kErrorTextBufferSize = 512;

// Copies the text for `code`, zero-terminated, into `buffer` and stores its length without the zero in *length. Texts
// are in code page 936 (GBK). `size` is ignored: pass a buffer of kErrorTextBufferSize bytes. Primary language 4
// (Chinese) selects the Chinese text, any other the English one. A code without a text of its own gets a general one.
// Returns VEXO_OK.
int32_t CopyErrorMessage(int32_t code, char* buffer, uint32_t size, int32_t primary_language, uint32_t* length);

// Returns the text for a code in the user's language. A positive code is a system error and is returned as a decimal
// number.
std::string GetErrorText(int32_t code);

}  // namespace vexo

#endif  // VEXO_MESSAGES_ERROR_TEXT_H_
