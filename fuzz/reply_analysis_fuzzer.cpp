// For any reply, the analysis must account for each byte or refuse the reply, decode or refuse texts, and throw only
// the two exceptions that callers expect.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>

#include "monitor/task_over_info.h"
#include "protocol/reply_analysis.h"
#include "require.h"

namespace {

constexpr size_t kPayloadOffset = 18;

// Final, because its base class has virtual functions but no virtual destructor.
class Reply final : public vexo::CAnalysisCmdBase {
 public:
  using CAnalysisCmdBase::CAnalysisCmdBase;
};

// No value if the analysis throws.
std::optional<Reply> Analyse(const std::string& raw) {
  try {
    return Reply(raw);
  } catch (const std::out_of_range&) {
    return {};
  }
}

std::optional<std::string> Decode(const std::string& text) {
  try {
    return vexo::UrlDecode(text, 0);
  } catch (const std::invalid_argument&) {
    return {};
  }
}

void RequireAccounted(const std::string& raw) {
  const std::optional<Reply> reply = Analyse(raw);
  if (!reply) {
    Require(raw.size() >= kPayloadOffset + 4 && raw.find("getkey") != std::string::npos);
    return;
  }
  Require(reply->raw_reply() == raw && reply->result() == reply->value());
  if (raw.size() < kPayloadOffset) {
    Require(!reply->valid() && reply->header().empty() && reply->result().empty());
    return;
  }
  const std::string front = reply->header() + reply->fixed_part() + reply->command_line() + reply->status_bytes();
  Require(raw.rfind(front, 0) == 0);
  Require(raw.size() >= front.size() + reply->value().size());
  Require(raw.compare(raw.size() - reply->value().size(), std::string::npos, reply->value()) == 0);
  if (!reply->status_bytes().empty()) {
    const size_t between = raw.size() - front.size() - reply->value().size();
    Require(between == 0 || (between == 4 && reply->command_line().find("getkey") != std::string::npos));
    Require(reply->status() == (reply->status_bytes()[1] != '\0'));
  }
}

// An escape is incomplete exactly if it begins in the last two characters.
void RequireDecoded(const std::string& text) {
  std::string expected;
  bool cut_off = false;
  for (size_t i = 0; i < text.size() && !cut_off; ++i) {
    const std::string digits = text[i] == '%' ? text.substr(i + 1, 2) : "";
    cut_off = text[i] == '%' && digits.size() < 2;
    const int decoded = text[i] == '%' ? static_cast<int>(std::strtol(digits.c_str(), nullptr, 16)) : text[i];
    expected += text[i] == '+' ? ' ' : static_cast<char>(decoded);
    i += digits.size();
  }
  const std::optional<std::string> decoded = Decode(text);
  Require(decoded.has_value() != cut_off);
  Require(cut_off || *decoded == expected);
}

// The texts must be those that the analysis finds after each frame start.
void RequireCollected(const std::string& heard) {
  const std::string texts = vexo::CollectReplyValues(vexo::Bytes(heard.begin(), heard.end()));
  std::string expected;
  std::string left = heard;
  for (bool more = true; more;) {
    const size_t end = left.find("\x1b\x1c");
    const std::optional<Reply> reply = Analyse("\x1b\x1c" + left.substr(0, end));
    if (reply && !reply->result().empty()) {
      expected += (expected.empty() ? "" : "|") + reply->result();
    }
    more = end != std::string::npos;
    left = more ? left.substr(end + 2) : "";
  }
  Require(texts == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  RequireAccounted(bytes);
  RequireDecoded(bytes);
  RequireCollected(bytes);
  return 0;
}
