// For any stream, each decoder must give the same result as a simple reference decoder, make progress, stay within its
// input, and find the same complete frames however the stream is fragmented.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "monitor/report_decoder.h"
#include "require.h"

namespace {

using vexo::ProtocolFamily;

constexpr char kHeader[] = "\x1b\x1c& V1 report";
constexpr size_t kHeaderSize = 13;
constexpr size_t kPayloadOffset = 17;

// Event or not, type, length, task, value, payload, tracking reset.
using Report = std::tuple<bool, uint32_t, uint32_t, int32_t, uint32_t, std::string, bool>;

struct Outcome {
  std::vector<Report> reports;
  std::string rest;
  bool early = false;  // A frame was decoded before its last bytes arrived.
};

bool operator==(const Outcome& left, const Outcome& right) {
  return left.reports == right.reports && left.rest == right.rest;
}

// Reference decoder that removes one byte at a time from the front of a string.
class ReferenceDecoder {
 public:
  ReferenceDecoder(std::string bytes, ProtocolFamily family) : bytes_(std::move(bytes)), family_(family) {}

  Outcome Run() {
    while (family_ == ProtocolFamily::kV1 ? bytes_.size() > kHeaderSize : bytes_.size() >= 3) {
      if (bytes_.rfind(kHeader, 0) == 0) {
        if (!TakeFrame()) {
          break;
        }
      } else if (family_ == ProtocolFamily::kGsParenH && bytes_[0] == '7') {
        if (!TakeReply()) {
          break;
        }
      } else if (family_ == ProtocolFamily::kGsParenH && std::string(kHeader).rfind(bytes_, 0) == 0) {
        break;  // A header may follow.
      } else {
        bytes_.erase(0, 1);
      }
    }
    outcome_.rest = bytes_;
    return outcome_;
  }

 private:
  static uint32_t Byte(const std::string& bytes, size_t index) { return static_cast<uint8_t>(bytes[index]); }
  static uint32_t Number(const std::string& bytes, size_t index) {
    if (bytes.size() < index + 4) {
      return 0;
    }
    return Byte(bytes, index) | Byte(bytes, index + 1) << 8 | Byte(bytes, index + 2) << 16 |
           Byte(bytes, index + 3) << 24;
  }
  static int32_t Task(const std::string& bytes, size_t index) {
    try {
      return bytes.size() < index + 4 ? 0 : std::stoi(bytes.substr(index, 4));
    } catch (const std::logic_error&) {
      return 0;
    }
  }

  bool TakeFrame() {
    if (bytes_.size() < kPayloadOffset) {
      return false;
    }
    const uint32_t type = Byte(bytes_, 13) + 256 * Byte(bytes_, 14);
    const uint32_t length = Byte(bytes_, 15) + 256 * Byte(bytes_, 16);
    if (bytes_.size() < length) {
      return false;
    }
    outcome_.early |= bytes_.size() < kPayloadOffset + length;
    const std::string payload = bytes_.substr(kPayloadOffset, length);
    const int32_t task = type == 0x103 || type == 0x104 ? 0 : Task(payload, 1);
    const uint32_t value = type == 0x104 ? Number(payload, 1) : type == 0x101 ? Number(payload, 5) : 0;
    outcome_.reports.emplace_back(type == 0x100 || type == 0x101, type, length, task, value, payload, false);
    bytes_.erase(0, kPayloadOffset + length);
    return true;
  }

  bool TakeReply() {
    const uint32_t type = Byte(bytes_, 1);
    const size_t length = type == 0x22 ? 7 : 3;
    if (bytes_.size() < length) {
      return false;
    }
    const std::string reply = bytes_.substr(0, length);
    outcome_.reports.emplace_back(type == 0x22 || type == 0x23, type, length, type == 0x22 ? Task(reply, 2) : 0, 0,
                                  reply, type == 0x24);
    bytes_.erase(0, length);
    return true;
  }

  std::string bytes_;
  const ProtocolFamily family_;
  Outcome outcome_;
};

// The library's decoder, called as by a monitor.
Outcome Decode(const std::string& bytes, ProtocolFamily family, const std::vector<size_t>& pieces) {
  Outcome outcome;
  size_t done = 0;
  for (const size_t piece : pieces) {
    outcome.rest += bytes.substr(done, piece);
    done += piece;
    for (;;) {
      // Exact size, so that the sanitizer detects any access beyond the end.
      const size_t size = outcome.rest.size();
      const auto copy = std::make_unique<uint8_t[]>(size);
      std::copy(outcome.rest.begin(), outcome.rest.end(), copy.get());
      const vexo::DecodeStep step = vexo::DecodeNextReport(copy.get(), size, family);
      Require(step.consumed <= size);
      outcome.rest.erase(0, step.consumed);
      const vexo::ReportRecord& record = step.record;
      if (record.kind == vexo::RecordKind::kEmpty) {
        break;
      }
      Require(step.consumed > 0);
      outcome.early |= record.payload.size() < record.length;
      outcome.reports.emplace_back(record.kind == vexo::RecordKind::kJobEvent, record.type, record.length,
                                   record.task_id, record.value,
                                   std::string(record.payload.begin(), record.payload.end()), step.tracking_reset);
    }
  }
  return outcome;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  std::vector<size_t> pieces;
  for (size_t done = 0; done < size; done += pieces.back()) {
    pieces.push_back(std::min<size_t>(1 + data[done] % 32, size - done));
  }
  for (const ProtocolFamily family : {ProtocolFamily::kV1, ProtocolFamily::kGsParenH}) {
    const Outcome whole = Decode(bytes, family, {size});
    Require(whole == ReferenceDecoder(bytes, family).Run());
    for (const auto& cut : {pieces, std::vector<size_t>(size, 1)}) {
      const Outcome cut_up = Decode(bytes, family, cut);
      Require(whole.early || cut_up.early || whole == cut_up);
    }
  }
  return 0;
}
