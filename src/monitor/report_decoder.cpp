#include "monitor/report_decoder.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <utility>

#include "protocol/v1_command.h"

namespace vexo {
namespace {

constexpr size_t kTypeOffset = 13;
constexpr size_t kLengthOffset = 15;
constexpr size_t kPayloadOffset = 17;

constexpr uint8_t kReplyStart = 0x37;
constexpr size_t kReplySize = 3;
constexpr size_t kJobStartedReplySize = 7;

constexpr size_t kTaskNumberDigits = 4;

// Compatibility: a field that is not complete reads as 0 rather than as part of a number.
uint32_t ReadBounded32(const Bytes& bytes, size_t offset) {
  return bytes.size() >= offset + 4 ? ReadLittleEndian32(bytes.data() + offset) : 0;
}

bool IsWhiteSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Parses four characters of decimal text as std::stoi does, but returns 0 where it would throw.
int32_t ReadTaskNumber(const Bytes& bytes, size_t offset) {
  if (bytes.size() < offset + kTaskNumberDigits) {
    return 0;
  }
  char text[kTaskNumberDigits] = {};
  std::memcpy(text, bytes.data() + offset, kTaskNumberDigits);
  const char* first = std::find_if_not(std::begin(text), std::end(text), IsWhiteSpace);
  if (first != std::end(text) && *first == '+') {
    ++first;
    if (first != std::end(text) && *first == '-') {
      return 0;
    }
  }
  int32_t number = 0;
  std::from_chars(first, std::end(text), number);
  return number;
}

bool StartsFrame(const uint8_t* bytes, size_t size) {
  const Bytes& header = ReportCommand();
  return size >= header.size() && std::equal(header.begin(), header.end(), bytes);
}

// Whether the bytes may become a header once more arrive.
bool MayStartFrame(const uint8_t* bytes, size_t size) {
  const Bytes& header = ReportCommand();
  return size < header.size() && std::equal(bytes, bytes + size, header.begin());
}

ReportRecord DecodeFrame(uint16_t type, uint16_t length, Bytes payload) {
  ReportRecord record;
  const bool is_event = type == kReportJobStarted || type == kReportJobEnded;
  record.kind = is_event ? RecordKind::kJobEvent : RecordKind::kReply;
  record.type = type;
  record.length = length;
  record.payload = std::move(payload);
  if (type == kReportValue) {
    record.value = ReadBounded32(record.payload, 1);
  } else if (type != kReportPlain) {
    record.task_id = ReadTaskNumber(record.payload, 1);
  }
  if (type == kReportJobEnded) {
    record.value = ReadBounded32(record.payload, 5);
  }
  return record;
}

// `frame` points to a header. Returns an empty step if the frame is incomplete.
//
// Compatibility: the payload length is compared with the bytes from the start of the frame; see DecodeNextReport.
DecodeStep TakeFrame(const uint8_t* frame, size_t size) {
  DecodeStep step;
  if (size < kPayloadOffset) {
    return step;
  }
  const uint16_t length = ReadLittleEndian16(frame + kLengthOffset);
  if (size < length) {
    return step;
  }
  step.consumed = std::min(size, kPayloadOffset + length);
  step.record = DecodeFrame(ReadLittleEndian16(frame + kTypeOffset), length,
                            Bytes(frame + kPayloadOffset, frame + step.consumed));
  return step;
}

// `reply` points to 0x37 and has at least three bytes. Returns an empty step if the reply is incomplete.
DecodeStep TakeReply(const uint8_t* reply, size_t size) {
  DecodeStep step;
  const uint8_t type = reply[1];
  const size_t length = type == kReplyJobStarted ? kJobStartedReplySize : kReplySize;
  if (size < length) {
    return step;
  }
  step.consumed = length;
  step.tracking_reset = type == kReplyTrackingReset;
  const bool is_event = type == kReplyJobStarted || type == kReplyJobEnded;
  step.record.kind = is_event ? RecordKind::kJobEvent : RecordKind::kReply;
  step.record.type = type;
  step.record.length = static_cast<uint16_t>(length);
  step.record.payload.assign(reply, reply + length);
  if (type == kReplyJobStarted) {
    step.record.task_id = ReadTaskNumber(step.record.payload, 2);
  }
  return step;
}

DecodeStep Skip(size_t skipped, DecodeStep step) {
  step.consumed += skipped;
  return step;
}

// Always keeps the last 13 bytes, in which a header may begin.
DecodeStep DecodeV1(const uint8_t* bytes, size_t size) {
  const size_t header_size = ReportCommand().size();
  size_t position = 0;
  while (size - position > header_size) {
    const auto* const found = static_cast<const uint8_t*>(
        std::memchr(bytes + position, ReportCommand().front(), size - position - header_size));
    if (found == nullptr) {
      position = size - header_size;
      break;
    }
    position = static_cast<size_t>(found - bytes);
    if (StartsFrame(found, size - position)) {
      return Skip(position, TakeFrame(found, size - position));
    }
    ++position;
  }
  return Skip(position, {});
}

DecodeStep DecodeGsParenH(const uint8_t* bytes, size_t size) {
  size_t position = 0;
  while (size - position >= kReplySize) {
    const uint8_t* const here = bytes + position;
    const size_t left = size - position;
    if (StartsFrame(here, left)) {
      return Skip(position, TakeFrame(here, left));
    }
    if (*here == kReplyStart) {
      return Skip(position, TakeReply(here, left));
    }
    if (MayStartFrame(here, left)) {
      break;
    }
    ++position;
  }
  return Skip(position, {});
}

}  // namespace

DecodeStep DecodeNextReport(const uint8_t* bytes, size_t size, ProtocolFamily family) {
  return family == ProtocolFamily::kV1 ? DecodeV1(bytes, size) : DecodeGsParenH(bytes, size);
}

}  // namespace vexo
