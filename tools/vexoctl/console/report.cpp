#include "vexoctl/console/report.h"

#include <windows.h>

#include "platform/language.h"
#include "messages/error_text.h"
#include "vexo/error.hpp"
#include "vexoctl/console/text.h"

namespace vexoctl {
namespace {

std::string SystemErrorText(int32_t code) {
  wchar_t* text = nullptr;
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                     nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  if (length == 0) {
    return "a system error without a description";
  }
  std::string utf8 = Utf8FromWide({text, length});
  LocalFree(text);
  return utf8;
}

// The codes for which GetErrorText has only general texts. UTF-8, as this file is.
constexpr struct {
  int32_t code;
  const char* chinese;
} kWithoutOwnText[] = {
    {VEXO_ERROR_DOWNLOAD_CANCELLED, "下载已取消。"},
    {VEXO_ERROR_DOWNLOAD_MODE, "打印机未进入下载模式。"},
    {VEXO_ERROR_DOWNLOAD_EMPTY, "文件为空。"},
    {VEXO_ERROR_DOWNLOAD_NO_ANSWER, "打印机没有应答。"},
    {VEXO_ERROR_DOWNLOAD_BAD_ANSWER, "打印机拒绝或未确认数据。"},
    {VEXO_ERROR_MONITOR_PARAMETER, "缺少参数或参数超出范围。"},
    {VEXO_ERROR_MONITOR_NO_ANSWER, "打印机没有应答。"},
    {VEXO_ERROR_MONITOR_ANSWER_TOO_LONG, "打印机的应答过长。"},
    {VEXO_ERROR_MONITOR_OUT_OF_MEMORY, "内存不足，无法监控打印任务。"},
    {VEXO_ERROR_MONITOR_NOT_OPEN, "打印任务监控未打开。"},
};

std::string LibraryErrorText(int32_t code) {
  for (const auto& entry : kWithoutOwnText) {
    if (entry.code == code) {
      const bool chinese = vexo::platform::UserPrimaryLanguage() == vexo::platform::kLanguageChinese;
      return chinese ? entry.chinese : vexo::ErrorDescription(code);
    }
  }
  return Utf8FromGbk(vexo::GetErrorText(code));
}

// The texts are meant for message boxes: some have several lines, or end in a line end.
std::string OnOneLine(std::string text) {
  constexpr char kLineEnds[] = "\r\n";
  text.erase(text.find_last_not_of(" \r\n") + 1);
  for (size_t at = text.find_first_of(kLineEnds); at != std::string::npos; at = text.find_first_of(kLineEnds, at)) {
    text.replace(at, text.find_first_not_of(kLineEnds, at) - at, " ");
  }
  return text;
}

}  // namespace

void PrintResult(const Result& result, const Options& options) {
  WriteOutput(options.json ? result.json.dump() + "\n" : result.text);
}

void PrintNote(std::string_view note, const Options& options) {
  WriteError((options.json ? nlohmann::ordered_json{{"note", note}}.dump() : "vexoctl: " + std::string(note)) + "\n");
}

void PrintFailure(const Failure& failure, const Options& options) {
  const std::string message = ErrorText(failure.code());
  if (options.json) {
    const nlohmann::ordered_json error = {{"code", failure.code()}, {"message", message}, {"action", failure.what()}};
    WriteError(nlohmann::ordered_json{{"error", error}}.dump() + "\n");
  } else {
    WriteError(std::string("vexoctl: ") + failure.what() + ": " + std::to_string(failure.code()) + " " + message +
               "\n");
  }
}

std::string ErrorText(int32_t code) { return OnOneLine(code > 0 ? SystemErrorText(code) : LibraryErrorText(code)); }

}  // namespace vexoctl
