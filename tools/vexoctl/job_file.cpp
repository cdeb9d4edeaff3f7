#include "vexoctl/job_file.h"

#include "vexoctl/console_text.h"
#include "vexoctl/failure.h"

namespace vexoctl {
namespace {

constexpr char kStandardInput[] = "-";

// Small enough for a slow line to take a piece within the port's write limit.
constexpr DWORD kPieceSize = 4096;

}  // namespace

JobFile::JobFile(const std::string& name)
    : name_(name == kStandardInput ? "the standard input" : Utf8FromAnsi(name)),
      file_(name == kStandardInput ? GetStdHandle(STD_INPUT_HANDLE)
                                   : CreateFileA(name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                                 FILE_FLAG_SEQUENTIAL_SCAN, nullptr)) {
  if (file_ == INVALID_HANDLE_VALUE) {
    throw Failure("cannot open " + name_, static_cast<int32_t>(GetLastError()));
  }
  LARGE_INTEGER size = {};
  if (GetFileType(file_) == FILE_TYPE_DISK && GetFileSizeEx(file_, &size)) {
    size_ = static_cast<uint64_t>(size.QuadPart);
  }
}

JobFile::~JobFile() { CloseHandle(file_); }

std::vector<uint8_t> JobFile::Read() {
  std::vector<uint8_t> piece(kPieceSize);
  DWORD read = 0;
  if (!ReadFile(file_, piece.data(), kPieceSize, &read, nullptr)) {
    const DWORD error = GetLastError();
    if (error != ERROR_BROKEN_PIPE) {  // A pipe ends so.
      throw Failure("cannot read " + name_, static_cast<int32_t>(error));
    }
  }
  piece.resize(read);
  return piece;
}

}  // namespace vexoctl
