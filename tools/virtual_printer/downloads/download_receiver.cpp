#include "virtual_printer/downloads/download_receiver.h"

#include <algorithm>
#include <utility>

namespace virtual_printer {

Match MatchPrefix(const std::uint8_t* data, std::size_t size, std::string_view expected) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), std::min(size, expected.size()));
  if (expected.substr(0, bytes.size()) != bytes) {
    return Match::kNo;
  }
  return bytes.size() == expected.size() ? Match::kFull : Match::kPartial;
}

Bytes FirstBytes(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kShown = 16;
  return {data, data + std::min(size, kShown)};
}

void AddAnswer(Exchange& exchange, Bytes bytes, std::string text, std::optional<DownloadFaultKind> fault) {
  if (fault) {
    text += " (fault)";
  }
  if (fault == DownloadFaultKind::kSilence) {
    exchange.note = "not answered: " + text;
  } else if (fault == DownloadFaultKind::kDrop) {
    exchange.action = ConnectionAction::kDrop;
  } else if (fault == DownloadFaultKind::kSplit) {
    const auto half = bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2);
    if (half != bytes.begin()) {
      exchange.answers.push_back({Bytes(bytes.begin(), half), text + ", first piece"});
    }
    exchange.answers.push_back({Bytes(half, bytes.end()), std::move(text), kPieceSplitPause});
  } else {
    exchange.answers.push_back({std::move(bytes), std::move(text)});
  }
}

bool IsRefusal(std::optional<DownloadFaultKind> fault) {
  return fault == DownloadFaultKind::kRefuse || fault == DownloadFaultKind::kWrongEcho ||
         fault == DownloadFaultKind::kBadChecksum;
}

}  // namespace virtual_printer
