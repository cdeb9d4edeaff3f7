#include "platform/own_folder.h"

#include <filesystem>
#include <system_error>

namespace vexo::platform {

// Here the library is linked into the program.
OwnedFile OpenOwnFile(const char* name) {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  return OwnedFile(error ? nullptr : std::fopen((program.parent_path() / name).c_str(), "rb"));
}

}  // namespace vexo::platform
