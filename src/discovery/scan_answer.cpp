#include "discovery/scan_answer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "vexo/error.h"

namespace vexo {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kReady = "ready";
constexpr size_t kAddressField = 0;

constexpr int kTcpPort = 9100;
constexpr size_t kDescriptorSize = 64;

// Where a reply has its addresses, and the fields that they replace.
constexpr size_t kFirstRepliedField = 10;
constexpr size_t kFirstRepliedByte = 8;
constexpr size_t kBytesPerAddress = 4;

// Whether the second line is exactly "ready".
bool IsReady(std::string_view answer) {
  const size_t end = answer.find(kLineEnd);
  if (end == std::string_view::npos) {
    return false;
  }
  answer.remove_prefix(end + kLineEnd.size());
  return answer.substr(0, answer.find(kLineEnd)) == kReady;
}

// Removes a number of at most 255 from the front of *text. Rejects leading zeros, which the system would parse as
// octal.
std::optional<uint32_t> TakeNumber(std::string_view* text) {
  const size_t length = std::min(text->find_first_not_of("0123456789"), text->size());
  const std::string_view digits = text->substr(0, length);
  if (digits.empty() || digits.size() > 3 || (digits.size() > 1 && digits.front() == '0')) {
    return std::nullopt;
  }
  text->remove_prefix(length);
  uint32_t number = 0;
  for (const char digit : digits) {
    number = number * 10 + static_cast<uint32_t>(digit - '0');
  }
  return number <= 255 ? std::optional(number) : std::nullopt;
}

std::optional<uint32_t> ReadDottedAddress(std::string_view text) {
  constexpr int kNumbers = 4;
  uint32_t address = 0;
  for (int i = 0; i < kNumbers; ++i) {
    if (i > 0) {
      if (text.empty() || text.front() != '.') {
        return std::nullopt;
      }
      text.remove_prefix(1);
    }
    const std::optional<uint32_t> number = TakeNumber(&text);
    if (!number) {
      return std::nullopt;
    }
    address = address << 8 | *number;
  }
  return text.empty() ? std::optional(address) : std::nullopt;
}

}  // namespace

ScanFields SplitScanAnswer(std::string_view answer) {
  ScanFields fields;
  for (std::string_view& field : fields) {
    const size_t end = answer.find(kLineEnd);
    field = answer.substr(0, end);
    if (end == std::string_view::npos) {
      break;
    }
    answer.remove_prefix(end + kLineEnd.size());
  }
  return fields;
}

std::optional<uint32_t> ScanRecord::Address() const { return ReadDottedAddress(fields_[kAddressField]); }

std::string ScanRecord::DescriptorOfPrinter() const {
  const std::string address(fields_[kAddressField]);
  char descriptor[kDescriptorSize];
  (void)std::snprintf(descriptor, sizeof(descriptor), "NET,%s,%d", address.c_str(), kTcpPort);
  return descriptor;
}

void ScanRecord::TakeReply(const Bytes& reply) {
  for (size_t i = 0; i < kAddressCount; ++i) {
    const size_t first = kFirstRepliedByte + i * kBytesPerAddress;
    if (reply.size() < first + kBytesPerAddress) {
      return;
    }
    const uint8_t* const bytes = reply.data() + first;
    (void)std::snprintf(addresses_[i], kAddressSize, "%u.%u.%u.%u", unsigned{bytes[3]}, unsigned{bytes[2]},
                        unsigned{bytes[1]}, unsigned{bytes[0]});
    fields_[kFirstRepliedField + i] = addresses_[i];
  }
}

void ScanRecord::AppendTo(std::string* text) const {
  const size_t begin = text->size();
  for (const std::string_view& field : fields_) {
    if (&field != &fields_.front()) {
      *text += ';';
    }
    *text += field;
  }
  if (text->size() - begin > kMaxScanRecordLength) {
    text->resize(begin + kMaxScanRecordLength);
  }
}

void ScanList::Add(std::string_view answer) {
  if (IsReady(answer)) {
    records_.emplace_back(answer);
  }
}

std::string ScanList::Text() const {
  std::string text;
  for (const ScanRecord& record : records_) {
    record.AppendTo(&text);
    text += '|';
  }
  return text;
}

int32_t CopyScanText(const std::string& text, char* buffer, int32_t size) {
  if (size < 0 || text.size() > static_cast<size_t>(size)) {
    return VEXO_ERROR_BUFFER_TOO_SMALL;
  }
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  return VEXO_OK;
}

}  // namespace vexo
