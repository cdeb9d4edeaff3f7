#include "vexoctl/error_words.h"

#include <windows.h>

#include "protocol/error_text.h"
#include "vexoctl/console_text.h"

namespace vexoctl {
namespace {

std::string SystemErrorWords(int32_t code) {
  wchar_t* text = nullptr;
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                     nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  if (length == 0) {
    return "an error of the system without a description";
  }
  std::string words = Utf8FromWide({text, length});
  LocalFree(text);
  return words;
}

// The texts are meant for message boxes: some are broken into lines or end in one. Scripts read failures line by line.
std::string OnOneLine(std::string text) {
  constexpr char kLineEnds[] = "\r\n";
  text.erase(text.find_last_not_of(" \r\n") + 1);
  for (size_t at = text.find_first_of(kLineEnds); at != std::string::npos; at = text.find_first_of(kLineEnds, at)) {
    text.replace(at, text.find_first_not_of(kLineEnds, at) - at, " ");
  }
  return text;
}

}  // namespace

std::string ErrorWords(int32_t code) {
  return OnOneLine(code > 0 ? SystemErrorWords(code) : Utf8FromGbk(vexo::GetErrorText(code)));
}

}  // namespace vexoctl
