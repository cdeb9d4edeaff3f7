// A port object that a host could have made: it answers from a script and keeps what it was asked.
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

// A printer handle that holds `port` and is marked open.
inline VexoPrinterHandle OpenHandle(VexoPort* port) { return {VEXO_PRINTER_MAGIC, nullptr, port, 1}; }

class ScriptedPort : public VexoPort {
 public:
  // What one operation does.
  struct Step {
    int32_t result = VEXO_OK;
    Bytes bytes = {};                    // What a read brings, as far as there is room.
    std::optional<uint32_t> count = {};  // Reported instead of the bytes brought or written.
    std::function<void()> hook = {};     // Runs at the end of the operation.
  };

  ScriptedPort();

  // Steps are taken in order. A write without a step succeeds, a read without one finds nothing: -332, and 0 from
  // ReadAvailable. Read and ReadAvailable share their steps.
  void OnWrite(Step step) { writes_.push_back(std::move(step)); }
  void OnRead(Step step) { reads_.push_back(std::move(step)); }

  // Each operation with its numbers, "Write(0, 21)", "Read(0, 3)", "Close()".
  const std::vector<std::string>& Operations() const { return operations_; }
  // The bytes of each write.
  const std::vector<Bytes>& Written() const { return written_; }

 private:
  static ScriptedPort& From(VexoPort* port) { return *static_cast<ScriptedPort*>(port); }

  void Note(const char* operation, uint32_t first, uint32_t second);
  int32_t TakeRead(int32_t otherwise, uint8_t* to, uint32_t room, uint32_t* read);

  std::deque<Step> writes_;
  std::deque<Step> reads_;
  std::vector<std::string> operations_;
  std::vector<Bytes> written_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_SCRIPTED_PORT_H_
