#ifndef VEXOCTL_JOB_FILE_H_
#define VEXOCTL_JOB_FILE_H_

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vexoctl {

// The data of a print job, byte by byte as it is in a file or comes from the standard input stream.
class JobFile {
 public:
  // @param name in the user's ANSI code page; "-" for the standard input stream. Throws a Failure when it cannot be
  //             opened.
  explicit JobFile(const std::string& name);
  ~JobFile();
  JobFile(const JobFile&) = delete;
  JobFile& operator=(const JobFile&) = delete;

  // The next piece of a handy size; empty at the end. Throws a Failure.
  std::vector<uint8_t> Read();

  // In bytes; 0 when it is not known in advance.
  uint64_t size() const { return size_; }

  // For messages, in UTF-8.
  const std::string& name() const { return name_; }

 private:
  std::string name_;
  HANDLE file_;
  uint64_t size_ = 0;
};

}  // namespace vexoctl

#endif  // VEXOCTL_JOB_FILE_H_
