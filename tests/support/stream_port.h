// A port object for tests with several threads: reads return what a generator function produces. Nothing is recorded.
#ifndef VEXO_TESTS_SUPPORT_STREAM_PORT_H_
#define VEXO_TESTS_SUPPORT_STREAM_PORT_H_

#include <algorithm>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <utility>

#include "support/scripted_port.h"
#include "vexo/printer.h"

namespace vexo::test {

class StreamPort : public VexoPort {
 public:
  using Source = std::function<std::string(size_t room)>;  // Returns the next bytes, at most `room` (64 or more).
  using WriteResult = std::function<int32_t(uint32_t length)>;

  explicit StreamPort(
      Source source, WriteResult write_result = [](uint32_t /*length*/) { return VEXO_OK; })
      : VexoPort(), source_(std::move(source)), write_result_(std::move(write_result)) {
    magic = VEXO_PORT_MAGIC;
    VexoPort::Write = [](VexoPort* port, const uint8_t*, uint32_t, uint32_t length, uint32_t* written) {
      *written = length;
      return static_cast<StreamPort*>(port)->write_result_(length);
    };
    VexoPort::ReadAvailable = [](VexoPort* port, uint8_t* buffer, uint32_t from, uint32_t to, uint32_t* read) {
      StreamPort* const stream = static_cast<StreamPort*>(port);
      const std::lock_guard<std::mutex> guard(stream->mutex_);
      const std::string bytes = stream->source_(to - from);
      std::copy(bytes.begin(), bytes.end(), buffer + from);
      *read = static_cast<uint32_t>(bytes.size());
      return int32_t{VEXO_OK};
    };
  }

 private:
  std::mutex mutex_;
  const Source source_;
  const WriteResult write_result_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_SUPPORT_STREAM_PORT_H_
