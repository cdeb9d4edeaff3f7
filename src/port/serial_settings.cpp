#include "port/serial_settings.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "port/bounded_text.h"
#include "vexo/error.h"

namespace vexo {
namespace {

// Compatibility: the low bytes of the error codes for a bad parity, data bit and stop bit value, which no system
// accepts. Configure stores them without an error, and Open then fails.
constexpr uint8_t kBadParity = static_cast<uint8_t>(VEXO_ERROR_SERIAL_PARITY & 0xFF);
constexpr uint8_t kBadByteSize = static_cast<uint8_t>(VEXO_ERROR_SERIAL_BYTE_SIZE & 0xFF);
constexpr uint8_t kBadStopBits = static_cast<uint8_t>(VEXO_ERROR_SERIAL_STOP_BITS & 0xFF);

constexpr uint32_t kLeastByteSize = 4;
constexpr uint32_t kMostByteSize = 8;
constexpr uint32_t kShortestWriteConstant = 2000;
constexpr uint32_t kMillisecondsPerStep = 600;

template <typename Value>
struct Word {
  const char* text;
  Value value;
};

constexpr Word<uint32_t> kSpeeds[] = {{"1200", 1200},   {"2400", 2400},   {"4800", 4800},
                                      {"9600", 9600},   {"14400", 14400}, {"19200", 19200},
                                      {"38400", 38400}, {"57600", 57600}, {"115200", 115200}};
constexpr Word<uint8_t> kStopBits[] = {{"1", 0}, {"1.5", 1}, {"2", 2}};

// Letters are accepted in either case.
constexpr Word<uint8_t> kParities[] = {{"N", 0}, {"O", 1}, {"E", 2}, {"M", 3}, {"S", 4}};
constexpr Word<uint32_t> kFlowControls[] = {
    {"N", 0}, {"D", kFlowDtrDsr}, {"C", kFlowRtsCts}, {"P", kFlowDtrDsr | kFlowRtsCts}, {"X", kFlowXonXoff}};

template <typename Value, size_t count>
const Word<Value>* Find(const Word<Value> (&words)[count], const char* text) {
  const auto* const found = std::find_if(std::begin(words), std::end(words),
                                         [text](const Word<Value>& word) { return std::strcmp(word.text, text) == 0; });
  return found != std::end(words) ? found : nullptr;
}

// The upper-cased text of a one-letter setting; empty when the value is longer.
struct Letter {
  explicit Letter(const char* value) {
    if (std::strlen(value) == 1) {
      text[0] = UpperCaseAscii(value[0]);
    }
  }

  char text[2] = {};
};

uint8_t ReadByteSize(const char* text) {
  uint32_t number = 0;
  for (; *text >= '0' && *text <= '9' && number <= kMostByteSize; ++text) {
    number = number * 10 + static_cast<uint32_t>(*text - '0');
  }
  return number >= kLeastByteSize && number <= kMostByteSize ? static_cast<uint8_t>(number) : kBadByteSize;
}

const char* ValueOf(const DeviceUri& uri, const char* key) {
  const char* const value = FindUriParameter(uri, key);
  return value != nullptr ? value : "";
}

}  // namespace

int32_t ReadSerialSettings(const DeviceUri& uri, SerialSettings* settings) {
  const Word<uint32_t>* const speed = Find(kSpeeds, ValueOf(uri, "baudrate"));
  if (speed == nullptr) {
    return VEXO_ERROR_SERIAL_BAUDRATE;
  }
  const Word<uint8_t>* const parity = Find(kParities, Letter(ValueOf(uri, "parity")).text);
  const Word<uint8_t>* const stop_bits = Find(kStopBits, ValueOf(uri, "stopbits"));
  const Word<uint32_t>* const flow_control = Find(kFlowControls, Letter(ValueOf(uri, "flowcontrol")).text);
  if (flow_control == nullptr) {
    return VEXO_ERROR_SERIAL_FLOW_CONTROL;
  }
  settings->baud_rate = speed->value;
  settings->parity = parity != nullptr ? parity->value : kBadParity;
  settings->byte_size = ReadByteSize(ValueOf(uri, "bytesize"));
  settings->stop_bits = stop_bits != nullptr ? stop_bits->value : kBadStopBits;
  settings->flow_control = flow_control->value;
  return VEXO_OK;
}

uint32_t SerialWriteConstant(uint32_t chunk_size, uint32_t baud_rate) {
  return std::max(chunk_size * 8 / baud_rate * kMillisecondsPerStep, kShortestWriteConstant);
}

}  // namespace vexo
