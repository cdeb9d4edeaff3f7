// A port object that a host could have made: it answers from a script and keeps what it was asked.
#ifndef VEXO_TESTS_SUPPORT_SCRIPTED_PORT_H_
#define VEXO_TESTS_SUPPORT_SCRIPTED_PORT_H_

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/bytes.h"
#include "vexo/error.h"
#include "vexo/printer.h"

namespace vexo::test {

inline Bytes BytesOf(std::string_view text) { return {text.begin(), text.end()}; }

// A printer handle that holds `port` and is marked open.
inline VexoPrinterHandle OpenHandle(VexoPort* port) { return {VEXO_PRINTER_MAGIC, nullptr, port, 1}; }

// Safe to use from any thread.
class ScriptedPort : public VexoPort {
 public:
  // What one operation does.
  struct Step {
    int32_t result = VEXO_OK;
    Bytes bytes = {};                    // What a read brings, as far as there is room.
    std::optional<uint32_t> count = {};  // Reported instead of the bytes brought or written.
    std::function<void()> hook = {};     // Runs at the end of the operation: somebody closes the handle, time passes.
  };

  ScriptedPort();

  // Steps are taken in order. A write without a step succeeds, a read without one finds nothing: -332, and 0 from
  // ReadAvailable. Read and ReadAvailable share their steps.
  void OnWrite(Step step);
  void OnRead(Step step);

  // Each operation with its numbers, "Write(0, 21)", "Read(0, 3)", "Close()".
  std::vector<std::string> Operations() const;
  // The bytes of each write.
  std::vector<Bytes> Written() const;

 private:
  static ScriptedPort& From(VexoPort* port) { return *static_cast<ScriptedPort*>(port); }

  Step Take(std::deque<Step>* steps, const Step& otherwise, std::string operation);
  int32_t TakeRead(const char* name, int32_t otherwise, uint8_t* buffer, uint32_t from, uint32_t second, uint32_t room,
                   uint32_t* read);

  mutable std::mutex mutex_;
  std::deque<Step> writes_;
  std::deque<Step> reads_;
  std::vector<std::string> operations_;
  std::vector<Bytes> written_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_SCRIPTED_PORT_H_
