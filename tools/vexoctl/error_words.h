#ifndef VEXOCTL_ERROR_WORDS_H_
#define VEXOCTL_ERROR_WORDS_H_

#include <cstdint>
#include <string>

namespace vexoctl {

// The meaning of a result code in the user's language, on one line, in UTF-8: the library's words for its own codes,
// the system's for positive ones, and the tool's for those of downloads and of the job monitor, for which the library
// has none.
std::string ErrorWords(int32_t code);

}  // namespace vexoctl

#endif  // VEXOCTL_ERROR_WORDS_H_
