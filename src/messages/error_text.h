// The words for each result code, in English and Chinese.
#ifndef VEXO_MESSAGES_ERROR_TEXT_H_
#define VEXO_MESSAGES_ERROR_TEXT_H_

#include <cstdint>
#include <string>

namespace vexo {

// Every text, with its terminating zero, fits into this many bytes.
inline constexpr uint32_t kErrorTextBufferSize = 512;

// Copies the text for `code`, with its terminating zero, into `buffer` and its length without the zero to *length.
// Texts are in code page 936 (GBK). `size` is not consulted: pass kErrorTextBufferSize bytes. The primary language 4
// (Chinese) selects the Chinese text, any other the English one. A code without a text of its own gets a general one.
// Always 0.
int32_t CopyErrorMessage(int32_t code, char* buffer, uint32_t size, int32_t primary_language, uint32_t* length);

// The text for a code in the user's language. Codes above 0 are the system's: they are written in decimal.
std::string GetErrorText(int32_t code);

}  // namespace vexo

#endif  // VEXO_MESSAGES_ERROR_TEXT_H_
