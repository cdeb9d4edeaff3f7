#include "monitor/task_over_info.h"

#include <algorithm>
#include <stdexcept>

#include "platform/clock.h"
#include "protocol/checked_printer.h"
#include "protocol/reply_analysis.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr uint32_t kPassPauseMs = 20;
constexpr uint32_t kPassSize = 256;
constexpr char kFrameStart[] = "\x1b\x1c";
constexpr size_t kFrameStartSize = 2;
constexpr char kBetweenTexts = '|';

class Stopwatch {
 public:
  // Whether more than `milliseconds` have passed.
  bool HasPassed(int64_t milliseconds) const {
    const int64_t elapsed = platform::PerformanceCounter() - started_;
    return elapsed > milliseconds * platform::PerformanceFrequency() / 1000;
  }

 private:
  int64_t started_ = platform::PerformanceCounter();
};

// Reads up to 256 bytes. A bad or closed handle only fails this pass.
int32_t Listen(const CheckedPrinter& printer, Bytes* heard) {
  uint8_t bytes[kPassSize];
  uint32_t count = 0;
  const int32_t result = printer.Read(bytes, kPassSize, &count);
  heard->insert(heard->end(), bytes, bytes + std::min(count, kPassSize));
  return result;
}

// Returns an empty string when the piece is not a reply, so that noise between replies does not affect them.
std::string ReplyValue(const std::string& reply) {
  try {
    return CAnalysisCmdBase(reply).result();
  } catch (const std::out_of_range&) {
    return {};
  }
}

}  // namespace

std::string CollectReplyValues(const Bytes& heard) {
  const std::string stream(heard.begin(), heard.end());
  std::string values;
  for (size_t begin = 0; begin <= stream.size();) {
    const size_t end = std::min(stream.find(kFrameStart, begin), stream.size());
    const std::string value = ReplyValue(kFrameStart + stream.substr(begin, end - begin));
    if (!value.empty()) {
      values += value + kBetweenTexts;
    }
    begin = end + kFrameStartSize;
  }
  if (!values.empty()) {
    values.pop_back();
  }
  return values;
}

int32_t ReadTaskOverInfo(VexoPrinterHandle* handle, int32_t time_ms, char* text, uint32_t text_length,
                         uint32_t* length) {
  const CheckedPrinter printer(handle);
  const Stopwatch stopwatch;
  Bytes heard;
  int32_t result = VEXO_OK;
  do {
    platform::SleepMs(kPassPauseMs);
    result = Listen(printer, &heard);
  } while (!stopwatch.HasPassed(time_ms));
  if (heard.empty()) {
    return result;
  }
  std::string texts;
  try {
    texts = UrlDecode(CollectReplyValues(heard), 0);
  } catch (const std::invalid_argument&) {
    return VEXO_ERROR_PARAMETER;
  }
  if (text_length < texts.size()) {
    return VEXO_ERROR_BUFFER_TOO_SMALL;
  }
  // Compatibility: the whole buffer is zeroed, but no zero is written after a text of exactly its size.
  std::fill_n(text, text_length, '\0');
  std::copy(texts.begin(), texts.end(), text);
  *length = static_cast<uint32_t>(texts.size());
  return VEXO_OK;
}

}  // namespace vexo
