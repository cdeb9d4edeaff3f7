#include "vexoctl/console_line.h"

#include "vexoctl/console_text.h"

namespace vexoctl {

ConsoleLine::ConsoleLine() : visible_(ErrorsReachConsole()) {}

ConsoleLine::~ConsoleLine() {
  if (length_ > 0) {
    WriteError("\r" + std::string(length_, ' ') + "\r");
  }
}

void ConsoleLine::Show(const std::string& text) {
  if (!visible_) {
    return;
  }
  const size_t rest_of_old = length_ > text.size() ? length_ - text.size() : 0;
  length_ = text.size();
  WriteError("\r" + text + std::string(rest_of_old, ' '));
}

}  // namespace vexoctl
