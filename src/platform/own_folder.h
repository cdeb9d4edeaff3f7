// The folder of the library itself, independent of the host's current folder. Files of the library's installation are
// in this folder.
#ifndef VEXO_PLATFORM_OWN_FOLDER_H_
#define VEXO_PLATFORM_OWN_FOLDER_H_

#include <cstdio>
#include <memory>

namespace vexo::platform {

struct FileCloser {
  void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

// Opens a file in that folder for binary reading. Returns null on failure. There is no function for the folder's path:
// it may contain characters outside the system's code page. Throws std::bad_alloc.
OwnedFile OpenOwnFile(const char* name);

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_OWN_FOLDER_H_
