#include "download/source_file.h"

#include <limits>

namespace vexo {

int32_t getFileSize(std::FILE* file) {
  const int64_t end = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : 0;
  std::rewind(file);
  return end > 0 && end <= std::numeric_limits<int32_t>::max() ? static_cast<int32_t>(end) : 0;
}

bool SourceFile::Open(const char* name) {
  if (name == nullptr) {
    return false;
  }
  file_.reset(std::fopen(name, "rb"));
  if (file_ == nullptr) {
    return false;
  }
  size_ = getFileSize(file_.get());
  return true;
}

size_t SourceFile::Read(uint8_t* buffer, size_t wanted) { return std::fread(buffer, 1, wanted, file_.get()); }

}  // namespace vexo
