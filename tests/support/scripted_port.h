// A port object as a host could supply it. It replies from a script and records the calls.
#ifndef VEXO_TESTS_SUPPORT_SCRIPTED_PORT_H_
#define VEXO_TESTS_SUPPORT_SCRIPTED_PORT_H_

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "protocol/bytes.h"
#include "vexo/error.h"
#include "vexo/printer.h"

namespace vexo::test {

inline Bytes BytesOf(std::string_view text) { return {text.begin(), text.end()}; }

// An open printer handle for `port`.
inline VexoPrinterHandle OpenHandle(VexoPort* port) { return {VEXO_PRINTER_MAGIC, nullptr, port, 1}; }

class ScriptedPort : public VexoPort {
 public:
  // The outcome of one operation.
  struct Step {
    int32_t result = VEXO_OK;
    Bytes bytes = {};                    // Data of a read, cut to the buffer size.
    std::optional<uint32_t> count = {};  // Reported in place of the true number of bytes.
    std::function<void()> hook = {};     // Runs at the end of the operation.
  };

  ScriptedPort();

  // Steps are used in order. Without a step, a write succeeds and a read finds nothing: -332 from Read, 0 from
  // ReadAvailable. Read and ReadAvailable share their steps.
  void OnWrite(Step step) { writes_.push_back(std::move(step)); }
  void OnRead(Step step) { reads_.push_back(std::move(step)); }

  // The calls, with their numeric arguments: "Write(0, 21)", "Read(0, 3)", "Close()".
  const std::vector<std::string>& Operations() const { return operations_; }
  // The bytes of each write.
  const std::vector<Bytes>& Written() const { return written_; }

 private:
  static ScriptedPort& From(VexoPort* port) { return *static_cast<ScriptedPort*>(port); }

  void Record(const char* operation, uint32_t first, uint32_t second);
  int32_t TakeRead(int32_t otherwise, uint8_t* to, uint32_t room, uint32_t* read);

  std::deque<Step> writes_;
  std::deque<Step> reads_;
  std::vector<std::string> operations_;
  std::vector<Bytes> written_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_SCRIPTED_PORT_H_
