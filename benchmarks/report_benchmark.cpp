// Speed of the report decoder, compared with a memory search for one byte and with the regular expression for reports.
#include <algorithm>
#include <cstring>
#include <random>
#include <regex>
#include <string>

#include "measure.h"
#include "monitor/report_decoder.h"
#include "protocol/bytes.h"
#include "protocol/reply_patterns.h"

namespace vexo::benchmark {
namespace {

constexpr size_t kStreamSize = 64 * 1024 * 1024;
constexpr size_t kPatternSample = 128 * 1024;
constexpr int kRounds = 5;
constexpr uint8_t kAbsentByte = 0xFF;  // In none of the streams, so memchr searches to the end.

struct Stream {
  Bytes bytes;
  size_t frames = 0;
};

// Random bytes except the absent one. Some noise looks like the start of a report.
void AppendNoise(size_t length, std::mt19937* random, Bytes* bytes) {
  for (; length > 0; --length) {
    bytes->push_back(static_cast<uint8_t>((*random)() % kAbsentByte));
  }
}

void AppendFrame(Stream* stream) {
  Append(&stream->bytes, std::string_view("\x1b\x1c& V1 report\x01\x01\x09\x00?0042\x07\x00\x00\x00", 26));
  ++stream->frames;
}

// Frames, each preceded by `noise` bytes.
Stream MakeStream(size_t size, bool frames, size_t noise) {
  Stream stream;
  stream.bytes.reserve(size + noise + 26);
  std::mt19937 random(4711);
  while (stream.bytes.size() < size) {
    AppendNoise(noise, &random, &stream.bytes);
    if (frames) {
      AppendFrame(&stream);
    }
  }
  return stream;
}

size_t Decode(const Bytes& bytes, size_t size, ProtocolFamily family) {
  size_t frames = 0;
  for (size_t done = 0;;) {
    const DecodeStep step = DecodeNextReport(bytes.data() + done, size - done, family);
    done += step.consumed;
    if (step.record.kind == RecordKind::kEmpty) {
      return frames;
    }
    ++frames;
  }
}

// The same with the regular expression, at each position.
size_t Match(const Bytes& bytes, size_t size) {
  constexpr ptrdiff_t kFrameSize = 26;
  const auto* const end = reinterpret_cast<const char*>(bytes.data()) + size;
  size_t frames = 0;
  for (const auto* from = reinterpret_cast<const char*>(bytes.data()); from < end;) {
    const bool found = std::regex_search(from, end, StatusReportPattern(), std::regex_constants::match_continuous);
    frames += found ? 1 : 0;
    from += found ? std::min(kFrameSize, end - from) : 1;
  }
  return frames;
}

template <typename Work>
double MedianSeconds(Work work) {
  std::vector<double> times;
  for (int round = 0; round < kRounds; ++round) {
    times.push_back(Seconds(work));
  }
  return Median(times);
}

struct Figures {
  double against_memchr;   // Time relative to memchr.
  double against_pattern;  // Speed relative to the regular expression.
};

Figures Measure(const Stream& stream, const char* name) {
  const Bytes& bytes = stream.bytes;
  const void* found = nullptr;
  size_t decoded = 0;
  const double memchr_seconds = MedianSeconds([&] { found = std::memchr(bytes.data(), kAbsentByte, bytes.size()); });
  const double seconds = MedianSeconds([&] { decoded = Decode(bytes, bytes.size(), ProtocolFamily::kV1); });
  Require(found == nullptr && decoded == stream.frames, name);

  size_t matched = 0;
  const double sample_seconds = MedianSeconds([&] { decoded = Decode(bytes, kPatternSample, ProtocolFamily::kV1); });
  const double pattern_seconds = Seconds([&] { matched = Match(bytes, kPatternSample); });
  Require(matched == decoded, name);
  std::fprintf(stderr, "%s: %.0f MiB/s, memchr %.0f MiB/s\n", name, 64 / seconds, 64 / memchr_seconds);
  return {seconds / memchr_seconds, pattern_seconds / sample_seconds};
}

void MeasureAll() {
  const Figures noise = Measure(MakeStream(kStreamSize, /*frames=*/false, 64), "noise");
  Report("decode noise, time against memchr", noise.against_memchr, "<=", 4);
  Report("decode noise, rate against the pattern", noise.against_pattern, ">=", 100);
  const Figures half = Measure(MakeStream(kStreamSize, /*frames=*/true, 26), "half reports");
  Report("decode half reports, rate against pattern", half.against_pattern, ">=", 100);
  const Figures frames = Measure(MakeStream(kStreamSize, /*frames=*/true, 0), "reports");
  Report("decode reports alone, rate against pattern", frames.against_pattern, ">=", 100);
  std::fprintf(stderr, "against memchr: half reports %.1f times as long, reports %.1f times\n", half.against_memchr,
               frames.against_memchr);
}

}  // namespace
}  // namespace vexo::benchmark

int main() {
  vexo::benchmark::MeasureAll();
  return 0;
}
