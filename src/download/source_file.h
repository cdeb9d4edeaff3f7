// The file that a download sends.
#ifndef VEXO_DOWNLOAD_SOURCE_FILE_H_
#define VEXO_DOWNLOAD_SOURCE_FILE_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace vexo {

// The size of a file opened for reading, which is left at its start. 0: it has none that counts, such as a pipe, or one
// above 2 GiB.
int32_t getFileSize(std::FILE* file);

class SourceFile {
 public:
  // False: no name, or no file that can be opened.
  bool Open(const char* name);

  // In bytes, when the file was opened.
  int32_t size() const { return size_; }

  // The next bytes; fewer than asked for when the file cannot be read or has become shorter.
  size_t Read(uint8_t* buffer, size_t wanted);

  void Close() { file_.reset(); }

 private:
  struct Closer {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
  };

  std::unique_ptr<std::FILE, Closer> file_;
  int32_t size_ = 0;
};

}  // namespace vexo

#endif  // VEXO_DOWNLOAD_SOURCE_FILE_H_
