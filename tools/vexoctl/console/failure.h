#ifndef VEXOCTL_CONSOLE_FAILURE_H_
#define VEXOCTL_CONSOLE_FAILURE_H_

#include <cstdint>
#include <exception>
#include <string>
#include <system_error>
#include <utility>

namespace vexoctl {

// An operation that failed: what was tried, and the result code. Ends the tool with exit status 1.
class Failure : public std::exception {
 public:
  // @param action what failed, in UTF-8, printed behind "vexoctl: ": "cannot open COM3,9600".
  // @param code   a code of vexo/error.h or, when positive, of the system.
  Failure(std::string action, int32_t code) : action_(std::move(action)), code_(code) {}

  const char* what() const noexcept override { return action_.c_str(); }
  int32_t code() const { return code_; }

 private:
  std::string action_;
  int32_t code_;
};

// Throws a Failure unless the code is 0.
inline void Require(int32_t code, const std::string& action) {
  if (code != 0) {
    throw Failure(action, code);
  }
}
inline void Require(const std::error_code& error, const std::string& action) { Require(error.value(), action); }

}  // namespace vexoctl

#endif  // VEXOCTL_CONSOLE_FAILURE_H_
