// The folder that the library itself lies in, whatever the host's current folder is: files that belong to an
// installation of the library stand beside it.
#ifndef VEXO_PLATFORM_OWN_FOLDER_H_
#define VEXO_PLATFORM_OWN_FOLDER_H_

#include <cstdio>
#include <memory>

namespace vexo::platform {

struct FileCloser {
  void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

// Opens a file of that folder to read its bytes. Null when it cannot be opened. The folder is not told as a text: its
// name may have letters that no code page of this machine knows. Throws std::bad_alloc.
OwnedFile OpenOwnFile(const char* name);

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_OWN_FOLDER_H_
