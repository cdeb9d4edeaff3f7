#include "virtual_printer/model/session.h"

#include <string>
#include <utility>
#include <vector>

#include "virtual_printer/model/scan_answer.h"
#include "virtual_printer/wire/trace_words.h"

namespace virtual_printer {
namespace {

Exchange Heard(std::string words) {
  Exchange exchange;
  exchange.received.text = std::move(words);
  return exchange;
}

Exchange FromReaction(Reaction reaction) {
  Exchange exchange = Heard(std::move(reaction.received));
  if (!reaction.answer.bytes.empty()) {
    exchange.answers.push_back(std::move(reaction.answer));
  }
  return exchange;
}

}  // namespace

void Session::Receive(const std::uint8_t* data, std::size_t size, Time now, const Sink& sink) {
  last_received_ = now;
  Bytes joined = std::exchange(held_, {});
  if (!joined.empty()) {
    joined.insert(joined.end(), data, data + size);
    data = joined.data();
    size = joined.size();
  }
  while (size > 0 && !dropped_) {
    std::size_t taken = 0;
    if (downloads_.Receiver() != nullptr && parser_.PendingBytes() == 0) {
      const Intake intake = TakeDownload(data, size, sink);
      if (intake.outcome == Intake::Outcome::kNeedsMore) {
        if (data == joined.data()) {
          held_ = std::move(joined);
        } else {
          held_.assign(data, data + size);
        }
        return;
      }
      taken = intake.size;
    }
    if (taken == 0) {
      taken = TakeCommands(data, size, now, sink);
    }
    data += taken;
    size -= taken;
  }
}

Intake Session::TakeDownload(const std::uint8_t* data, std::size_t size, const Sink& sink) {
  Intake intake = downloads_.Receiver()->Take(data, size);
  Emit(std::move(intake.exchange), sink);
  return intake;
}

std::size_t Session::TakeCommands(const std::uint8_t* data, std::size_t size, Time now, const Sink& sink) {
  // Behind a command, the next byte may belong to the download again.
  const std::size_t piece = downloads_.Receiver() != nullptr ? 1 : size;
  std::vector<Frame> frames;
  const std::size_t taken = parser_.Feed(data, piece, frames);
  for (const Frame& frame : frames) {
    Emit(ReactTo(frame, now), sink);
  }
  return taken;
}

void Session::Emit(Exchange exchange, const Sink& sink) {
  if (exchange.order != Order::kNone) {
    dropped_ = true;
  }
  sink(std::move(exchange));
}

std::optional<Time> Session::NextDeadline() const {
  if (held_.empty() || dropped_) {
    return std::nullopt;
  }
  const auto patience = downloads_.Receiver()->Patience(held_);
  return patience ? std::optional(last_received_ + *patience) : std::nullopt;
}

void Session::Advance(Time now, const Sink& sink) {
  if (const auto deadline = NextDeadline(); deadline && *deadline <= now) {
    const Bytes incomplete = std::exchange(held_, {});
    Emit(downloads_.Receiver()->OnQuiet(incomplete), sink);
  }
}

void Session::Finish(Time now, const Sink& sink) {
  for (const Frame& frame : parser_.Finish()) {
    Emit(ReactTo(frame, now), sink);
  }
  Exchange last;
  if (const Bytes incomplete = std::exchange(held_, {}); !incomplete.empty()) {
    last.received = {HeadOf(incomplete.data(), incomplete.size()), "unfinished, " + CountOfBytes(incomplete.size())};
  }
  last.note = downloads_.Abandon();
  Emit(std::move(last), sink);
}

Exchange Session::ReactTo(const Frame& frame, Time now) {
  const std::string length = CountOfBytes(frame.bytes.size());
  Exchange exchange;
  switch (frame.kind) {
    case Frame::Kind::kCommand:
      exchange = Execute(frame.command, now);
      break;
    case Frame::Kind::kUnfinishedCommand:
      exchange = Heard("unfinished command, " + length);
      break;
    case Frame::Kind::kOverlongCommand:
      exchange = Heard("command without a line end, " + length);
      break;
    case Frame::Kind::kPrintData:
      if (downloads_.Receiver() != nullptr) {
        exchange = Heard(length + " in a download, ignored");
      } else {
        state_.print_data_bytes += frame.bytes.size();
        exchange = Heard("print data, " + length + jobs_.AddPrintData(now));
      }
      break;
  }
  exchange.received.bytes = frame.bytes;
  return exchange;
}

Exchange Session::Execute(const Command& command, Time now) {
  if (std::optional<Exchange> exchange = downloads_.Execute(command)) {
    return *std::move(exchange);
  }
  // A host that sends other commands has given its download up.
  std::string lost = downloads_.Abandon();
  std::optional<Reaction> reaction = settings_.Execute(command);
  if (!reaction && command.kind == Command::Kind::kNetworkDetails) {
    reaction = TellNetworkDetails(state_.setup.identity);
  }
  if (!reaction) {
    reaction = jobs_.Execute(command, now);
  }
  Exchange exchange = FromReaction(reaction ? *std::move(reaction) : Reaction{LineText(command) + " (not simulated)"});
  exchange.note = std::move(lost);
  return exchange;
}

}  // namespace virtual_printer
