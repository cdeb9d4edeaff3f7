// Files named on the command line.
#ifndef VEXOCTL_SUPPORT_INPUT_FILE_H_
#define VEXOCTL_SUPPORT_INPUT_FILE_H_

#include <windows.h>

#include <cstdint>
#include <string>

namespace vexoctl {

// Owns a handle of the system.
class FileHandle {
 public:
  explicit FileHandle(HANDLE handle) : handle_(handle) {}
  ~FileHandle() { CloseHandle(handle_); }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;

  HANDLE get() const { return handle_; }

 private:
  const HANDLE handle_;
};

// A file or the standard input, read byte by byte as it is.
class InputStream {
 public:
  // @param name in the user's ANSI code page; "-" for the standard input. Throws a Failure if it cannot be opened.
  explicit InputStream(const std::string& name);

  // The next few kilobytes; empty at the end. Throws a Failure.
  std::string Read();

  // The rest. Throws a Failure.
  std::string ReadAll();

  // In bytes; 0 if it is not known in advance.
  uint64_t size() const;

  // For messages, in UTF-8.
  const std::string& name() const { return name_; }

 private:
  const std::string name_;
  const FileHandle file_;
};

// A file that the library can download: readable, neither empty nor too large, with a name that the library can be
// passed. Nobody can change the file while the object exists.
class DownloadFile {
 public:
  // @param argument of the command line, in the user's ANSI code page. Throws a Failure.
  explicit DownloadFile(const std::string& argument);

  // For the library.
  const std::string& ansi_name() const { return ansi_name_; }

  // For messages, in UTF-8.
  const std::string& name() const { return name_; }

  uint32_t size() const { return size_; }

  // The whole content. Throws a Failure.
  std::string Read() const;

 private:
  const std::string ansi_name_;
  const std::string name_;
  const FileHandle file_;
  const uint32_t size_;
};

}  // namespace vexoctl

#endif  // VEXOCTL_SUPPORT_INPUT_FILE_H_
