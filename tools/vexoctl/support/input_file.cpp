#include "vexoctl/support/input_file.h"

#include <shellapi.h>

#include <limits>
#include <memory>

#include "vexo/error.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/text.h"

namespace vexoctl {
namespace {

constexpr char kStandardInput[] = "-";

// Small enough for a slow line to take it within the port's write limit.
constexpr DWORD kPieceSize = 4096;

// The library has 31 bits for the size of a file.
constexpr LONGLONG kLargestFile = std::numeric_limits<int32_t>::max();

// Throws a Failure.
HANDLE OpenStream(const std::string& ansi_name, const std::string& name) {
  const HANDLE file = ansi_name == kStandardInput
                          ? GetStdHandle(STD_INPUT_HANDLE)
                          : CreateFileA(ansi_name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    throw Failure("cannot open " + name, static_cast<int32_t>(GetLastError()));
  }
  return file;
}

struct FreeArguments {
  void operator()(wchar_t** arguments) const { LocalFree(arguments); }
};

// The argument as the user typed it: the C runtime passes the command line in the ANSI code page only.
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
HANDLE OpenForDownload(const std::string& ansi_name, const std::string& name) {
  if (WideFromAnsi(ansi_name) != AsTyped(ansi_name)) {
    throw Failure("cannot use the name " + name + ", which has characters outside code page " +
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

InputStream::InputStream(const std::string& name)
    : name_(name == kStandardInput ? "the standard input" : Utf8FromAnsi(name)), file_(OpenStream(name, name_)) {}

std::string InputStream::Read() {
  std::string piece(kPieceSize, '\0');
  DWORD read = 0;
  if (!ReadFile(file_.get(), piece.data(), kPieceSize, &read, nullptr)) {
    const DWORD error = GetLastError();
    if (error != ERROR_BROKEN_PIPE) {  // The end of a pipe.
      throw Failure("cannot read " + name_, static_cast<int32_t>(error));
    }
  }
  piece.resize(read);
  return piece;
}

std::string InputStream::ReadAll() {
  std::string content;
  for (std::string piece = Read(); !piece.empty(); piece = Read()) {
    content += piece;
  }
  return content;
}

uint64_t InputStream::size() const {
  LARGE_INTEGER size = {};
  const bool known = GetFileType(file_.get()) == FILE_TYPE_DISK && GetFileSizeEx(file_.get(), &size);
  return known ? static_cast<uint64_t>(size.QuadPart) : 0;
}

DownloadFile::DownloadFile(const std::string& argument)
    : ansi_name_(argument),
      name_(Utf8FromWide(AsTyped(argument))),
      file_(OpenForDownload(ansi_name_, name_)),
      size_(CheckedSize(file_.get(), name_)) {}

std::string DownloadFile::Read() const {
  std::string content(size_, '\0');
  DWORD read = 0;
  if (!ReadFile(file_.get(), content.data(), size_, &read, nullptr)) {
    throw Failure("cannot read " + name_, static_cast<int32_t>(GetLastError()));
  }
  if (read != size_) {
    throw Failure("cannot read all of " + name_, ERROR_HANDLE_EOF);
  }
  return content;
}

}  // namespace vexoctl
