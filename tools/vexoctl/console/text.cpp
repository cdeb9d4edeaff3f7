#include "vexoctl/console/text.h"

#include <windows.h>

#include <algorithm>

#include "vexoctl/console/failure.h"

namespace vexoctl {
namespace {

constexpr UINT kGbk = 936;

std::wstring WideFrom(UINT code_page, std::string_view text) {
  const int size = static_cast<int>(text.size());
  std::wstring wide(static_cast<size_t>(MultiByteToWideChar(code_page, 0, text.data(), size, nullptr, 0)), L'\0');
  MultiByteToWideChar(code_page, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
  return wide;
}

std::string NarrowFrom(std::wstring_view text, UINT code_page) {
  const int size = static_cast<int>(text.size());
  const int needed = WideCharToMultiByte(code_page, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<size_t>(needed), '\0');
  WideCharToMultiByte(code_page, 0, text.data(), size, narrow.data(), needed, nullptr, nullptr);
  return narrow;
}

// @return 0, or the system's error code.
DWORD WriteConsoleText(HANDLE console, std::wstring_view text) {
  while (!text.empty()) {
    DWORD written = 0;
    if (!WriteConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) {
      return GetLastError();
    }
    text.remove_prefix(written);
  }
  return 0;
}

DWORD WriteBytes(HANDLE file, std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD written = 0;
    if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
      return GetLastError();
    }
    bytes.remove_prefix(written);
  }
  return 0;
}

DWORD WriteText(DWORD stream, std::string_view utf8) {
  const HANDLE handle = GetStdHandle(stream);
  DWORD mode = 0;
  return GetConsoleMode(handle, &mode) ? WriteConsoleText(handle, WideFrom(CP_UTF8, utf8)) : WriteBytes(handle, utf8);
}

}  // namespace

std::string Utf8FromWide(std::wstring_view text) { return NarrowFrom(text, CP_UTF8); }

std::string AnsiFromWide(std::wstring_view text) { return NarrowFrom(text, CP_ACP); }

std::wstring WideFromAnsi(std::string_view text) { return WideFrom(CP_ACP, text); }

std::string Utf8FromGbk(std::string_view text) { return Utf8FromWide(WideFrom(kGbk, text)); }

std::string Utf8FromAnsi(std::string_view text) { return Utf8FromWide(WideFromAnsi(text)); }

std::string Utf8FromPrinter(std::string_view text) {
  const int size = static_cast<int>(text.size());
  const bool is_utf8 = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0) != 0;
  std::string utf8 = is_utf8 ? std::string(text) : Utf8FromAnsi(text);
  const auto is_control = [](unsigned char byte) { return byte < ' ' || byte == '\x7f'; };
  std::replace_if(utf8.begin(), utf8.end(), is_control, ' ');
  return utf8;
}

void WriteOutput(std::string_view utf8) {
  Require(static_cast<int32_t>(WriteText(STD_OUTPUT_HANDLE, utf8)), "cannot write the result");
}

void WriteError(std::string_view utf8) { WriteText(STD_ERROR_HANDLE, utf8); }

bool ErrorsReachConsole() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace vexoctl
