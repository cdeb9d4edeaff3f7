#ifndef VEXOCTL_FAILURE_H_
#define VEXOCTL_FAILURE_H_

#include <cstdint>
#include <exception>
#include <string>

namespace vexoctl {

// An operation that did not succeed: what was tried, and the result code that came back. Ends the tool with status 1.
class Failure : public std::exception {
 public:
  // @param action what failed, in UTF-8, to be read after "vexoctl: ": "cannot open COM3,9600".
  // @param code   a code of vexo/error.h or, when positive, of the system.
  Failure(std::string action, int32_t code);

  const char* what() const noexcept override { return action_.c_str(); }
  int32_t code() const { return code_; }

 private:
  std::string action_;
  int32_t code_;
};

// Throws a Failure unless the code says success.
void Require(int32_t code, const std::string& action);

}  // namespace vexoctl

#endif  // VEXOCTL_FAILURE_H_
