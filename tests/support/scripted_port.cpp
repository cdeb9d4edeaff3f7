#include "support/scripted_port.h"

#include <algorithm>

#include "support/allocation_faults.h"

namespace vexo::test {
namespace {

ScriptedPort::Step Take(std::deque<ScriptedPort::Step>* steps, int32_t otherwise) {
  ScriptedPort::Step step = {otherwise};
  if (!steps->empty()) {
    step = std::move(steps->front());
    steps->pop_front();
  }
  return step;
}

int32_t Finish(const ScriptedPort::Step& step, uint32_t count, uint32_t* out) {
  *out = step.count.value_or(count);
  if (step.hook) {
    step.hook();
  }
  return step.result;
}

}  // namespace

ScriptedPort::ScriptedPort() : VexoPort() {
  magic = VEXO_PORT_MAGIC;
  kind = VEXO_PORT_NET;
  VexoPort::Close = [](VexoPort* port) {
    const UncountedAllocations uncounted;
    From(port).operations_.emplace_back("Close()");
    return int32_t{VEXO_OK};
  };
  VexoPort::Write = [](VexoPort* port, const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) {
    const UncountedAllocations uncounted;
    From(port).Record("Write", offset, length);
    From(port).written_.emplace_back(buffer + offset, buffer + offset + length);
    return Finish(Take(&From(port).writes_, VEXO_OK), length, written);
  };
  VexoPort::Read = [](VexoPort* port, uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) {
    const UncountedAllocations uncounted;
    From(port).Record("Read", offset, length);
    return From(port).TakeRead(VEXO_ERROR_IO_READ_TIMEOUT, buffer + offset, length, read);
  };
  VexoPort::ReadAvailable = [](VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
    const UncountedAllocations uncounted;
    From(port).Record("ReadAvailable", from, to);
    return From(port).TakeRead(VEXO_OK, buffer + from, to - from, read);
  };
}

void ScriptedPort::Record(const char* operation, uint32_t first, uint32_t second) {
  operations_.push_back(std::string(operation) + "(" + std::to_string(first) + ", " + std::to_string(second) + ")");
}

int32_t ScriptedPort::TakeRead(int32_t otherwise, uint8_t* to, uint32_t room, uint32_t* read) {
  const Step step = Take(&reads_, otherwise);
  const size_t copied = std::min<size_t>(step.bytes.size(), room);
  std::copy_n(step.bytes.begin(), copied, to);
  return Finish(step, static_cast<uint32_t>(copied), read);
}

}  // namespace vexo::test
