#include "vexoctl/download_file.h"

#include <shellapi.h>

#include <limits>
#include <memory>

#include "vexo/error.h"
#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"

namespace vexoctl {
namespace {

// What the library takes for the size of a file has 31 bits.
constexpr LONGLONG kLargestFile = std::numeric_limits<int32_t>::max();

struct FreeArguments {
  void operator()(wchar_t** arguments) const { LocalFree(arguments); }
};

// The C runtime hands the command line over in the ANSI code page only.
std::wstring AsTyped(const std::string& argument) {
  int count = 0;
  const std::unique_ptr<wchar_t*, FreeArguments> arguments(CommandLineToArgvW(GetCommandLineW(), &count));
  for (int i = 0; arguments != nullptr && i < count; ++i) {
    std::wstring typed = arguments.get()[i];
    if (AnsiFromWide(typed) == argument) {
      return typed;
    }
  }
  return WideFromAnsi(argument);
}

bool IsFolder(const std::string& ansi_name) {
  const DWORD attributes = GetFileAttributesA(ansi_name.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Throws a Failure.
HANDLE Open(const std::string& ansi_name, const std::string& name) {
  if (WideFromAnsi(ansi_name) != AsTyped(ansi_name)) {
    throw Failure("cannot pass the name " + name + " on, which has characters outside code page " +
                      std::to_string(GetACP()) + "; rename the file",
                  ERROR_NO_UNICODE_TRANSLATION);
  }
  if (IsFolder(ansi_name)) {
    throw Failure(name + " is a folder", ERROR_ACCESS_DENIED);
  }
  const HANDLE file = CreateFileA(ansi_name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    throw Failure("cannot open " + name, static_cast<int32_t>(GetLastError()));
  }
  return file;
}

// Throws a Failure.
uint32_t CheckedSize(HANDLE file, const std::string& name) {
  LARGE_INTEGER size = {};
  if (GetFileType(file) != FILE_TYPE_DISK || !GetFileSizeEx(file, &size)) {
    throw Failure(name + " is not a file of a known size", ERROR_INVALID_PARAMETER);
  }
  if (size.QuadPart == 0) {
    throw Failure("nothing to download in " + name, VEXO_ERROR_DOWNLOAD_EMPTY);
  }
  if (size.QuadPart > kLargestFile) {
    throw Failure(name + " has " + std::to_string(size.QuadPart) + " bytes; " + std::to_string(kLargestFile) +
                      " can be downloaded",
                  ERROR_FILE_TOO_LARGE);
  }
  return static_cast<uint32_t>(size.QuadPart);
}

}  // namespace

DownloadFile::DownloadFile(const std::string& argument)
    : ansi_name_(argument), name_(Utf8FromWide(AsTyped(argument))), file_(Open(ansi_name_, name_)) {
  try {
    size_ = CheckedSize(file_, name_);
  } catch (const Failure&) {
    CloseHandle(file_);
    throw;
  }
}

DownloadFile::~DownloadFile() { CloseHandle(file_); }

std::vector<uint8_t> DownloadFile::Read() const {
  std::vector<uint8_t> content(size_);
  DWORD read = 0;
  if (!ReadFile(file_, content.data(), size_, &read, nullptr)) {
    throw Failure("cannot read " + name_, static_cast<int32_t>(GetLastError()));
  }
  if (read != size_) {
    throw Failure("cannot read all of " + name_, ERROR_HANDLE_EOF);
  }
  return content;
}

}  // namespace vexoctl
