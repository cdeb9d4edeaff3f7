#include "vexoctl/error_words.h"

#include <windows.h>

#include "messages/error_text.h"
#include "platform/language.h"
#include "vexo/error.h"
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

struct OwnWords {
  int32_t code;
  const char* english;
  const char* chinese;
};

// UTF-8, as this file is.
constexpr OwnWords kOwnWords[] = {
    {VEXO_ERROR_DOWNLOAD_CANCELLED, "The download was cancelled.", "下载已取消。"},
    {VEXO_ERROR_DOWNLOAD_MODE, "The printer did not enter its download mode.", "打印机未进入下载模式。"},
    {VEXO_ERROR_DOWNLOAD_EMPTY, "The file is empty.", "文件为空。"},
    {VEXO_ERROR_DOWNLOAD_NO_ANSWER, "The printer did not answer.", "打印机没有应答。"},
    {VEXO_ERROR_DOWNLOAD_BAD_ANSWER, "The printer refused the data or did not confirm it.", "打印机拒绝或未确认数据。"},
    {VEXO_ERROR_MONITOR_PARAMETER, "An argument is missing or out of range.", "缺少参数或参数超出范围。"},
    {VEXO_ERROR_MONITOR_NO_ANSWER, "The printer gave no answer.", "打印机没有应答。"},
    {VEXO_ERROR_MONITOR_ANSWER_TOO_LONG, "The printer's answer is too long.", "打印机的应答过长。"},
    {VEXO_ERROR_MONITOR_OUT_OF_MEMORY, "There is not enough memory for a job monitor.", "内存不足，无法监控打印任务。"},
    {VEXO_ERROR_MONITOR_NOT_OPEN, "Job monitoring is off.", "打印任务监控未打开。"},
};

std::string LibraryErrorWords(int32_t code) {
  for (const OwnWords& words : kOwnWords) {
    if (words.code == code) {
      return vexo::platform::UserPrimaryLanguage() == vexo::platform::kLanguageChinese ? words.chinese : words.english;
    }
  }
  return Utf8FromGbk(vexo::GetErrorText(code));
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

std::string ErrorWords(int32_t code) { return OnOneLine(code > 0 ? SystemErrorWords(code) : LibraryErrorWords(code)); }

}  // namespace vexoctl
