// Part of the C++ headers, not for hosts: the texts that the C functions return, taken apart.
#ifndef VEXO_DETAIL_SPLIT_HPP_
#define VEXO_DETAIL_SPLIT_HPP_

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vexo::detail {

// Removes the text up to the first separator, and the separator, from the front of *text; all of it if there is none.
inline std::string_view TakeUntil(char separator, std::string_view* text) {
  const std::string_view taken = text->substr(0, text->find(separator));
  text->remove_prefix(std::min(taken.size() + 1, text->size()));
  return taken;
}

// The parts of a text, each of which the separator ends; the last one may lack it.
inline std::vector<std::string> SplitRecords(std::string_view text, char separator) {
  std::vector<std::string> records;
  while (!text.empty()) {
    records.emplace_back(TakeUntil(separator, &text));
  }
  return records;
}

// The parts of a text between separators, at least one.
inline std::vector<std::string> SplitFields(std::string_view text, char separator) {
  std::vector<std::string> fields;
  for (size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator)) {
    fields.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  fields.emplace_back(text);
  return fields;
}

}  // namespace vexo::detail

#endif  // VEXO_DETAIL_SPLIT_HPP_
