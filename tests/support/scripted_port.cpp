#include "support/scripted_port.h"

#include <algorithm>
#include <utility>

#include "support/allocation_faults.h"

namespace vexo::test {
namespace {

std::string WithNumbers(const char* operation, uint32_t first, uint32_t second) {
  return std::string(operation) + "(" + std::to_string(first) + ", " + std::to_string(second) + ")";
}

void Finish(const ScriptedPort::Step& step, uint32_t count, uint32_t* out) {
  *out = step.count.value_or(count);
  if (step.hook) {
    step.hook();
  }
}

}  // namespace

ScriptedPort::ScriptedPort() : VexoPort() {
  magic = VEXO_PORT_MAGIC;
  kind = VEXO_PORT_NET;
  VexoPort::Close = [](VexoPort* port) {
    const UncountedAllocations uncounted;
    From(port).Take(nullptr, {}, "Close()");
    return int32_t{VEXO_OK};
  };
  VexoPort::Write = [](VexoPort* port, const uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* written) {
    const UncountedAllocations uncounted;
    const Step step = From(port).Take(&From(port).writes_, {}, WithNumbers("Write", offset, length));
    {
      const std::lock_guard<std::mutex> guard(From(port).mutex_);
      From(port).written_.emplace_back(buffer + offset, buffer + offset + length);
    }
    Finish(step, length, written);
    return step.result;
  };
  VexoPort::Read = [](VexoPort* port, uint8_t* buffer, uint32_t offset, uint32_t length, uint32_t* read) {
    return From(port).TakeRead("Read", VEXO_ERROR_IO_READ_TIMEOUT, buffer, offset, length, length, read);
  };
  VexoPort::ReadAvailable = [](VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
    return From(port).TakeRead("ReadAvailable", VEXO_OK, buffer, from, to, to - from, read);
  };
}

void ScriptedPort::OnWrite(Step step) {
  const std::lock_guard<std::mutex> guard(mutex_);
  writes_.push_back(std::move(step));
}

void ScriptedPort::OnRead(Step step) {
  const std::lock_guard<std::mutex> guard(mutex_);
  reads_.push_back(std::move(step));
}

std::vector<std::string> ScriptedPort::Operations() const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return operations_;
}

std::vector<Bytes> ScriptedPort::Written() const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return written_;
}

ScriptedPort::Step ScriptedPort::Take(std::deque<Step>* steps, const Step& otherwise, std::string operation) {
  const std::lock_guard<std::mutex> guard(mutex_);
  operations_.push_back(std::move(operation));
  if (steps == nullptr || steps->empty()) {
    return otherwise;
  }
  Step step = std::move(steps->front());
  steps->pop_front();
  return step;
}

int32_t ScriptedPort::TakeRead(const char* name, int32_t otherwise, uint8_t* buffer, uint32_t from, uint32_t second,
                               uint32_t room, uint32_t* read) {
  const UncountedAllocations uncounted;
  const Step step = Take(&reads_, {otherwise}, WithNumbers(name, from, second));
  const size_t brought = std::min<size_t>(step.bytes.size(), room);
  std::copy_n(step.bytes.begin(), brought, buffer + from);
  Finish(step, static_cast<uint32_t>(brought), read);
  return step.result;
}

}  // namespace vexo::test
