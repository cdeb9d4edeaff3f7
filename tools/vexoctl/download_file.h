#ifndef VEXOCTL_DOWNLOAD_FILE_H_
#define VEXOCTL_DOWNLOAD_FILE_H_

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vexoctl {

// A file that the library can download: it is there and readable, not empty and not too large, and its name can be
// given to the library. As long as the object exists, nobody can change the file.
class DownloadFile {
 public:
  // @param argument of the command line, in the user's ANSI code page. Throws a Failure.
  explicit DownloadFile(const std::string& argument);
  ~DownloadFile();
  DownloadFile(const DownloadFile&) = delete;
  DownloadFile& operator=(const DownloadFile&) = delete;

  // For the library.
  const char* ansi_name() const { return ansi_name_.c_str(); }

  // For messages, in UTF-8.
  const std::string& name() const { return name_; }

  uint32_t size() const { return size_; }

  // All of it. Throws a Failure.
  std::vector<uint8_t> Read() const;

 private:
  const std::string ansi_name_;
  const std::string name_;
  HANDLE file_ = INVALID_HANDLE_VALUE;
  uint32_t size_ = 0;
};

}  // namespace vexoctl

#endif  // VEXOCTL_DOWNLOAD_FILE_H_
