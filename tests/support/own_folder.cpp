#include "support/own_folder.h"

#include <cstdio>
#include <mutex>
#include <optional>

#include "platform/own_folder.h"
#include "support/allocation_faults.h"

namespace vexo {
namespace {

struct OwnFolder {
  std::optional<std::string> file = {};
  bool readable = true;
  int32_t requests = 0;
  std::string last_name = {};
};

std::mutex g_mutex;
OwnFolder g_folder;

void SetFolder(const OwnFolder& folder) {
  const std::lock_guard<std::mutex> guard(g_mutex);
  g_folder = folder;
}

}  // namespace

namespace test {

void SetOwnFile(const std::string& content) { SetFolder({content}); }

void SetUnreadableOwnFile() { SetFolder({"", false}); }

void RemoveOwnFile() { SetFolder({}); }

int32_t OwnFileRequests() {
  const std::lock_guard<std::mutex> guard(g_mutex);
  return g_folder.requests;
}

std::string LastOwnFileName() {
  const std::lock_guard<std::mutex> guard(g_mutex);
  return g_folder.last_name;
}

}  // namespace test

platform::OwnedFile platform::OpenOwnFile(const char* name) {
  const test::UncountedAllocations uncounted;
  const std::lock_guard<std::mutex> guard(g_mutex);
  ++g_folder.requests;
  g_folder.last_name = name;
  if (!g_folder.file) {
    return nullptr;
  }
  if (!g_folder.readable) {
    return OwnedFile(std::fopen("/", "rb"));  // Opens, but reading a folder fails.
  }
  OwnedFile file(std::tmpfile());
  const std::string content = *g_folder.file;
  static_cast<void>(std::fwrite(content.data(), 1, content.size(), file.get()));
  std::rewind(file.get());
  return file;
}

}  // namespace vexo
