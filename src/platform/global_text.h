// Strings in blocks of the system's global heap, where there is one.
#ifndef VEXO_PLATFORM_GLOBAL_TEXT_H_
#define VEXO_PLATFORM_GLOBAL_TEXT_H_

#include <cstddef>
#include <cstring>
#include <utility>

namespace vexo::platform {

// Returns null when out of memory.
void* AllocateGlobal(size_t size);
void FreeGlobal(void* block);

class GlobalText {
 public:
  GlobalText() = default;
  GlobalText(const GlobalText&) = delete;
  GlobalText& operator=(const GlobalText&) = delete;
  ~GlobalText() { Reset(); }

  // Returns false when out of memory; the old text stays.
  bool Assign(const char* text) {
    const size_t size = std::strlen(text) + 1;
    auto* const copy = static_cast<char*>(AllocateGlobal(size));
    if (copy == nullptr) {
      return false;
    }
    std::memcpy(copy, text, size);
    Reset();
    text_ = copy;
    return true;
  }

  const char* c_str() const { return text_ != nullptr ? text_ : ""; }

 private:
  void Reset() {
    if (text_ != nullptr) {
      FreeGlobal(std::exchange(text_, nullptr));
    }
  }

  char* text_ = nullptr;
};

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_GLOBAL_TEXT_H_
