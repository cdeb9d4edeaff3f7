#include "virtual_printer/downloads/download_control.h"

#include <string_view>
#include <utility>

namespace virtual_printer {
namespace {

constexpr std::string_view kReset = "\"reset_printer\"";
constexpr std::string_view kFont = "\"font_download_quick\"";
constexpr std::string_view kFirmware = "\"dfu\"";

}  // namespace

DownloadControl::DownloadControl(DownloadState& state) : state_(state) {
  if (state_.mode == PrinterMode::kYmodemLoader) {
    receiver_ = MakeYmodemReceiver(state_.faults);
  } else if (state_.mode == PrinterMode::kFirmwareLoader) {
    receiver_ = MakeFirmwareReceiver(state_.firmware, state_.faults);
  }
}

std::optional<Exchange> DownloadControl::Execute(const Command& command) {
  if (command.IsV1("do", kReset)) {
    return Restart(LineText(command));
  }
  if (state_.mode != PrinterMode::kOrdinary) {
    return ExecuteInLoader(command);
  }
  if (command.kind == Command::Kind::kFileMode) {
    return StartPackages(DownloadKind::kFile, "file download");
  }
  if (command.IsV1("do", kFont)) {
    return StartPackages(DownloadKind::kFont, LineText(command));
  }
  if (command.kind == Command::Kind::kLoaderMode) {
    return StartLoader(ConnectionAction::kStartYmodemLoader, "loader wanted");
  }
  if (command.IsV1("do", kFirmware)) {
    return StartLoader(ConnectionAction::kStartFirmwareLoader, LineText(command));
  }
  return std::nullopt;
}

std::string DownloadControl::Abandon() {
  std::string lost = receiver_ ? receiver_->Abandon() : std::string();
  receiver_.reset();
  return lost;
}

Exchange DownloadControl::StartPackages(DownloadKind kind, std::string description) {
  Exchange exchange;
  exchange.note = Abandon();
  exchange.received.text = std::move(description);
  const auto fault = state_.faults.Take({DownloadStep::Name::kMode, 0});
  if (IsRefusal(fault)) {
    AddAnswer(exchange, {'N', 'O'}, "refused", fault);
  } else {
    receiver_ = MakePackageReceiver(kind, state_.faults);
    AddAnswer(exchange, {'O', 'K'}, "ready for packages", fault);
  }
  return exchange;
}

Exchange DownloadControl::StartLoader(ConnectionAction action, std::string description) {
  Exchange exchange;
  exchange.note = Abandon();
  const auto fault = state_.faults.Take({DownloadStep::Name::kMode, 0});
  if (!fault) {
    exchange.received.text = std::move(description);
    exchange.action = action;
  } else {
    exchange.received.text = description + ", refused (fault)";
    exchange.action = fault == DownloadFaultKind::kDrop ? ConnectionAction::kDrop : ConnectionAction::kNone;
  }
  return exchange;
}

Exchange DownloadControl::Restart(std::string description) {
  Exchange exchange;
  exchange.received.text = std::move(description);
  exchange.action = ConnectionAction::kRestart;
  if (receiver_) {
    exchange.completed = receiver_->OnReset();
  }
  exchange.note = Abandon();
  return exchange;
}

Exchange DownloadControl::ExecuteInLoader(const Command& command) {
  Exchange exchange;
  if (state_.mode == PrinterMode::kFirmwareLoader && command.IsV1("do", kFirmware)) {
    // The host has given up an earlier attempt and starts again.
    state_.firmware.Discard();
    exchange.received.text = LineText(command) + ", the image begins anew";
  } else {
    exchange.received.text = LineText(command) + " (unknown to the loader)";
  }
  return exchange;
}

}  // namespace virtual_printer
