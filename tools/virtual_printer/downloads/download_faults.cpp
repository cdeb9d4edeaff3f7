#include "virtual_printer/downloads/download_faults.h"

#include <charconv>
#include <cstddef>

namespace virtual_printer {
namespace {

constexpr struct {
  std::string_view name;
  DownloadFaultKind kind;
} kKinds[] = {
    {"wrong-echo", DownloadFaultKind::kWrongEcho},
    {"bad-checksum", DownloadFaultKind::kBadChecksum},
    {"silence", DownloadFaultKind::kSilence},
    {"refuse", DownloadFaultKind::kRefuse},
    {"nak", DownloadFaultKind::kRefuse},
    {"split", DownloadFaultKind::kSplit},
    {"drop", DownloadFaultKind::kDrop},
};

constexpr struct {
  std::string_view name;
  DownloadStep::Name step;
} kSteps[] = {
    {"mode", DownloadStep::Name::kMode},       {"handshake", DownloadStep::Name::kHandshake},
    {"header", DownloadStep::Name::kHeader},   {"end", DownloadStep::Name::kEnd},
    {"closing", DownloadStep::Name::kClosing},
};

std::optional<std::uint32_t> ParseNumber(std::string_view text) {
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
}

std::optional<DownloadFaultKind> ParseKind(std::string_view text) {
  for (const auto& row : kKinds) {
    if (row.name == text) {
      return row.kind;
    }
  }
  return std::nullopt;
}

std::optional<DownloadStep> ParseStep(std::string_view text) {
  for (const auto& row : kSteps) {
    if (row.name == text) {
      return DownloadStep{row.step, 0};
    }
  }
  const auto index = ParseNumber(text);
  return index ? std::optional(DownloadStep{DownloadStep::Name::kPackage, *index}) : std::nullopt;
}

}  // namespace

std::optional<DownloadFault> ParseDownloadFault(std::string_view text) {
  const std::size_t at = text.find('@');
  if (at == std::string_view::npos) {
    return std::nullopt;
  }
  std::string_view step = text.substr(at + 1);
  std::optional<std::uint32_t> count = 1;
  if (const std::size_t times = step.rfind('x'); times != std::string_view::npos) {
    count = ParseNumber(step.substr(times + 1));
    step = step.substr(0, times);
  }
  const auto kind = ParseKind(text.substr(0, at));
  const auto parsed_step = ParseStep(step);
  if (!kind || !parsed_step || count.value_or(0) == 0) {
    return std::nullopt;
  }
  return DownloadFault{*kind, *parsed_step, *count};
}

std::optional<DownloadFaultKind> DownloadFaults::Take(DownloadStep step) {
  for (DownloadFault& fault : faults_) {
    if (fault.count > 0 && fault.step.name == step.name && fault.step.index == step.index) {
      --fault.count;
      return fault.kind;
    }
  }
  return std::nullopt;
}

}  // namespace virtual_printer
