// The file that a download sends.
#ifndef VEXO_DOWNLOAD_SOURCE_FILE_H_
#define VEXO_DOWNLOAD_SOURCE_FILE_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

namespace vexo {

// Returns the size of an open file and rewinds it. Returns 0 for files without a size, such as pipes, and for files
// above 2 GiB.
int32_t getFileSize(std::FILE* file);

class SourceFile {
 public:
  // Returns false when the name is null or the file cannot be opened.
  bool Open(const char* name);

  // Size in bytes at the time of opening.
  int32_t size() const { return size_; }

  // Reads the next bytes. Returns fewer than `wanted` when the file cannot be read or has become shorter.
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
