#include "virtual_printer/downloads/download_control.h"

#include <string_view>
#include <utility>

#include "virtual_printer/downloads/firmware_receiver.h"
#include "virtual_printer/downloads/package_receiver.h"
#include "virtual_printer/downloads/ymodem_receiver.h"
#include "virtual_printer/wire/trace_words.h"

namespace virtual_printer {
namespace {

constexpr std::string_view kReset = "\"reset_printer\"";
constexpr std::string_view kFont = "\"font_download_quick\"";
constexpr std::string_view kFirmware = "\"dfu\"";

bool IsDo(const Command& command, std::string_view action) {
  return command.kind == Command::Kind::kV1 && command.verb == "do" && command.arguments == action;
}

}  // namespace

DownloadControl::DownloadControl(DownloadState& state) : state_(state) {
  if (state_.mode == PrinterMode::kYmodemLoader) {
    receiver_ = std::make_unique<YmodemReceiver>(state_.faults);
  } else if (state_.mode == PrinterMode::kFirmwareLoader) {
    receiver_ = std::make_unique<FirmwareReceiver>(state_.firmware, state_.faults);
  }
}

std::optional<Exchange> DownloadControl::Execute(const Command& command) {
  if (IsDo(command, kReset)) {
    return Restart(LineText(command));
  }
  if (state_.mode != PrinterMode::kOrdinary) {
    return ExecuteInLoader(command);
  }
  if (command.kind == Command::Kind::kFileMode) {
    return ReceivePackages(DownloadKind::kFile, "file download");
  }
  if (IsDo(command, kFont)) {
    return ReceivePackages(DownloadKind::kFont, LineText(command));
  }
  if (command.kind == Command::Kind::kLoaderMode) {
    return StartLoader(Order::kStartYmodemLoader, "loader wanted");
  }
  if (IsDo(command, kFirmware)) {
    return StartLoader(Order::kStartFirmwareLoader, LineText(command));
  }
  return std::nullopt;
}

std::string DownloadControl::Abandon() {
  std::string lost = receiver_ ? receiver_->Abandon() : std::string();
  receiver_.reset();
  return lost;
}

Exchange DownloadControl::ReceivePackages(DownloadKind kind, std::string words) {
  Exchange exchange;
  exchange.note = Abandon();
  exchange.received.text = std::move(words);
  const auto fault = state_.faults.Take({DownloadStep::Name::kMode, 0});
  if (Refuses(fault)) {
    AddAnswer(exchange, {'N', 'O'}, "refused", fault);
  } else {
    receiver_ = std::make_unique<PackageReceiver>(kind, state_.faults);
    AddAnswer(exchange, {'O', 'K'}, "ready for packages", fault);
  }
  return exchange;
}

Exchange DownloadControl::StartLoader(Order order, std::string words) {
  Exchange exchange;
  exchange.note = Abandon();
  const auto fault = state_.faults.Take({DownloadStep::Name::kMode, 0});
  if (!fault) {
    exchange.received.text = std::move(words);
    exchange.order = order;
  } else {
    exchange.received.text = words + ", refused (fault)";
    exchange.order = fault == DownloadFaultKind::kDrop ? Order::kDropConnection : Order::kNone;
  }
  return exchange;
}

Exchange DownloadControl::Restart(std::string words) {
  Exchange exchange;
  exchange.received.text = std::move(words);
  exchange.order = Order::kRestart;
  if (receiver_) {
    exchange.completed = receiver_->OnReset();
  }
  exchange.note = Abandon();
  return exchange;
}

Exchange DownloadControl::ExecuteInLoader(const Command& command) {
  Exchange exchange;
  if (state_.mode == PrinterMode::kFirmwareLoader && IsDo(command, kFirmware)) {
    // The host gave up before, and begins again.
    state_.firmware.Forget();
    exchange.received.text = LineText(command) + ", the image begins anew";
  } else {
    exchange.received.text = LineText(command) + " (unknown to the loader)";
  }
  return exchange;
}

}  // namespace virtual_printer
