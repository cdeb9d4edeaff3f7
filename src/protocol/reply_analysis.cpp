#include "protocol/reply_analysis.h"

#include <cstdlib>
#include <stdexcept>

#include "vexo/error.h"

namespace vexo {
namespace {

constexpr char kHeader[] = "\x1b\x1c& V2";
constexpr size_t kHeaderSize = 6;
constexpr size_t kPayloadOffset = 18;
constexpr size_t kLengthOffset = 9;
constexpr size_t kStatusBytes = 4;
constexpr size_t kKeyRecordBytes = 4;
constexpr char kLineEnd[] = "\r\n";
constexpr size_t kLineEndSize = 2;

bool Contains(const std::string& text, const char* word) { return text.find(word) != std::string::npos; }

// Compatibility: the high byte is taken as signed, so a length of 32768 or more exceeds every reply. Printers never
// send one; hosts rely on such noise being rejected.
size_t PayloadLength(const std::string& reply) {
  const auto low = static_cast<uint8_t>(reply[kLengthOffset]);
  const auto high = static_cast<int8_t>(reply[kLengthOffset + 1]);
  return static_cast<size_t>(static_cast<ptrdiff_t>(low) + 256 * static_cast<ptrdiff_t>(high));
}

}  // namespace

CAnalysisCmdBase::CAnalysisCmdBase(const std::string& raw_reply) : raw_reply_(raw_reply) {
  if (raw_reply_.size() < kPayloadOffset) {
    valid_ = false;
    return;
  }
  header_ = raw_reply_.substr(0, kHeaderSize);
  valid_ = header_ == kHeader;
  fixed_part_ = raw_reply_.substr(kHeaderSize, kPayloadOffset - kHeaderSize);
  Analyse();  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall): see the declaration.
}

int32_t CAnalysisCmdBase::Analyse() {
  if (raw_reply_.size() < kPayloadOffset || raw_reply_.size() - kPayloadOffset < PayloadLength(raw_reply_)) {
    valid_ = false;
    return VEXO_ERROR_INCOMPLETE_REPLY;
  }
  const std::string payload = raw_reply_.substr(kPayloadOffset);
  const size_t line_end = payload.find(kLineEnd);
  command_line_ = line_end == std::string::npos ? std::string() : payload.substr(0, line_end + kLineEndSize);
  const std::string rest = payload.substr(command_line_.size());
  if (rest.size() < kStatusBytes) {
    return VEXO_ERROR_INCOMPLETE_REPLY;
  }
  status_bytes_ = rest.substr(0, kStatusBytes);
  const bool echoes_key_record = !Contains(command_line_, "getval") && Contains(command_line_, "getkey");
  value_ = rest.substr(echoes_key_record ? kStatusBytes + kKeyRecordBytes : kStatusBytes);
  status_ = status_bytes_[1] != '\0';
  result_ = value_;
  return VEXO_OK;
}

std::string UrlDecode(const std::string& text, uint8_t /*flag*/) {
  std::string decoded;
  decoded.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%') {
      if (i + 2 >= text.size()) {
        throw std::invalid_argument("Invalid URL encoding");
      }
      const char digits[] = {text[i + 1], text[i + 2], '\0'};
      decoded += static_cast<char>(std::strtol(digits, nullptr, 16) & 0xFF);
      i += 2;
    } else {
      decoded += text[i] == '+' ? ' ' : text[i];
    }
  }
  return decoded;
}

}  // namespace vexo
