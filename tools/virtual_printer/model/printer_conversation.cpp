#include "virtual_printer/model/printer_conversation.h"

#include <string>
#include <utility>
#include <vector>

#include "virtual_printer/model/network_identity.h"

namespace virtual_printer {
namespace {

Exchange ToExchange(CommandResult result) {
  Exchange exchange;
  exchange.received.text = std::move(result.description);
  if (!result.answer.bytes.empty()) {
    exchange.answers.push_back(std::move(result.answer));
  }
  return exchange;
}

}  // namespace

void PrinterConversation::Receive(const std::uint8_t* data, std::size_t size, Time now, const Sink& sink) {
  last_received_ = now;
  Bytes joined = std::exchange(held_, {});
  if (!joined.empty()) {
    joined.insert(joined.end(), data, data + size);
    data = joined.data();
    size = joined.size();
  }
  while (size > 0 && !dropped_) {
    std::size_t consumed = 0;
    if (downloads_.Receiver() != nullptr && parser_.PendingBytes() == 0) {
      const ReceiveResult result = ReceiveDownload(data, size, sink);
      if (result.outcome == ReceiveResult::Outcome::kNeedsMore) {
        if (data == joined.data()) {
          held_ = std::move(joined);
        } else {
          held_.assign(data, data + size);
        }
        return;
      }
      consumed = result.size;
    }
    if (consumed == 0) {
      consumed = ReceiveCommands(data, size, now, sink);
    }
    data += consumed;
    size -= consumed;
  }
}

ReceiveResult PrinterConversation::ReceiveDownload(const std::uint8_t* data, std::size_t size, const Sink& sink) {
  ReceiveResult result = downloads_.Receiver()->Receive(data, size);
  Emit(std::move(result.exchange), sink);
  return result;
}

std::size_t PrinterConversation::ReceiveCommands(const std::uint8_t* data, std::size_t size, Time now,
                                                 const Sink& sink) {
  // In a download, any byte after a command may be data again.
  const std::size_t piece = downloads_.Receiver() != nullptr ? 1 : size;
  std::vector<Frame> frames;
  const std::size_t consumed = parser_.Feed(data, piece, frames);
  for (const Frame& frame : frames) {
    Emit(CarryOut(frame, now), sink);
  }
  return consumed;
}

void PrinterConversation::Emit(Exchange exchange, const Sink& sink) {
  if (exchange.action != ConnectionAction::kNone) {
    dropped_ = true;
  }
  sink(std::move(exchange));
}

std::optional<Time> PrinterConversation::NextDeadline() const {
  if (held_.empty() || dropped_) {
    return std::nullopt;
  }
  const auto timeout = downloads_.Receiver()->Timeout(held_);
  return timeout ? std::optional(last_received_ + *timeout) : std::nullopt;
}

void PrinterConversation::Advance(Time now, const Sink& sink) {
  if (const auto deadline = NextDeadline(); deadline && *deadline <= now) {
    const Bytes incomplete = std::exchange(held_, {});
    Emit(downloads_.Receiver()->OnTimeout(incomplete), sink);
  }
}

void PrinterConversation::Finish(Time now, const Sink& sink) {
  for (const Frame& frame : parser_.Finish()) {
    Emit(CarryOut(frame, now), sink);
  }
  Exchange last;
  if (const Bytes incomplete = std::exchange(held_, {}); !incomplete.empty()) {
    last.received = {FirstBytes(incomplete.data(), incomplete.size()),
                     "unfinished, " + CountOfBytes(incomplete.size())};
  }
  last.note = downloads_.Abandon();
  Emit(std::move(last), sink);
}

Exchange PrinterConversation::CarryOut(const Frame& frame, Time now) {
  const std::string length = CountOfBytes(frame.bytes.size());
  Exchange exchange;
  switch (frame.kind) {
    case Frame::Kind::kCommand:
      exchange = Execute(frame.command, now);
      break;
    case Frame::Kind::kUnfinishedCommand:
      exchange.received.text = "unfinished command, " + length;
      break;
    case Frame::Kind::kOverlongCommand:
      exchange.received.text = "command without a line end, " + length;
      break;
    case Frame::Kind::kPrintData:
      if (downloads_.Receiver() != nullptr) {
        exchange.received.text = length + " in a download, ignored";
      } else {
        state_.print_data_bytes += frame.bytes.size();
        exchange.received.text = "print data, " + length + jobs_.AddPrintData(now);
      }
      break;
  }
  exchange.received.bytes = frame.bytes;
  return exchange;
}

Exchange PrinterConversation::Execute(const Command& command, Time now) {
  if (std::optional<Exchange> exchange = downloads_.Execute(command)) {
    return *std::move(exchange);
  }
  // With any other command the host abandons its download.
  std::string lost = downloads_.Abandon();
  std::optional<CommandResult> result = settings_.Execute(command);
  if (!result && command.kind == Command::Kind::kNetworkDetails) {
    result = TellNetworkDetails(state_.setup.identity);
  }
  if (!result) {
    result = jobs_.Execute(command, now);
  }
  Exchange exchange = ToExchange(result ? *std::move(result) : CommandResult{LineText(command) + " (not simulated)"});
  exchange.note = std::move(lost);
  return exchange;
}

}  // namespace virtual_printer
