// Whatever a host sends, the virtual printer accounts for each byte once, holds back little, understands the same
// however the bytes are cut into pieces, and still answers afterwards.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "virtual_printer/printer_model.h"

namespace {

using virtual_printer::Bytes;
using virtual_printer::CommandParser;
using virtual_printer::PrinterModel;
using virtual_printer::PrinterState;
using virtual_printer::WireEvent;

void Require(bool condition) {
  if (!condition) {
    std::abort();
  }
}

bool IsPrintData(const WireEvent& event) { return event.text.rfind("print data", 0) == 0; }

// Print data is reported piece by piece; joined, it no longer depends on the pieces.
void Append(std::vector<WireEvent>& events, const std::vector<WireEvent>& more) {
  for (const WireEvent& event : more) {
    if (!events.empty() && IsPrintData(events.back()) && IsPrintData(event)) {
      Bytes& joined = events.back().bytes;
      joined.insert(joined.end(), event.bytes.begin(), event.bytes.end());
      events.back().text = "print data";
    } else {
      events.push_back(event);
    }
  }
}

// A piece size of 0 takes the sizes from the data itself.
std::vector<WireEvent> Run(PrinterState& state, const std::uint8_t* data, std::size_t size, std::size_t piece_size) {
  PrinterModel model(state);
  std::vector<WireEvent> events;
  for (std::size_t offset = 0; offset < size;) {
    const std::size_t wanted = piece_size != 0 ? piece_size : 1 + data[offset] % 32;
    const std::size_t piece = std::min(wanted, size - offset);
    Append(events, model.Receive(data + offset, piece));
    Require(model.PendingBytes() <= CommandParser::kMaxPending);
    offset += piece;
  }
  Append(events, model.Finish());
  Require(model.PendingBytes() == 0);
  return events;
}

void RequireSame(const std::vector<WireEvent>& left, const std::vector<WireEvent>& right) {
  Require(left.size() == right.size());
  for (std::size_t i = 0; i < left.size(); ++i) {
    Require(left[i].direction == right[i].direction && left[i].bytes == right[i].bytes);
    Require(IsPrintData(left[i]) || left[i].text == right[i].text);
  }
}

void RequireAllBytes(const std::vector<WireEvent>& events, const std::uint8_t* data, std::size_t size) {
  Bytes received;
  for (const WireEvent& event : events) {
    if (event.direction == WireEvent::Direction::kReceived) {
      received.insert(received.end(), event.bytes.begin(), event.bytes.end());
    }
  }
  Require(received == Bytes(data, data + size));
}

// After as much noise as can complete any command, the printer listens again.
void RequireAnswersAfter(PrinterState& state, const std::uint8_t* data, std::size_t size) {
  constexpr std::string_view kGetWidth("\x1B\x1C& V1 getkey\r\n\x01\xCC\x00\x02", 19);
  Bytes stream(data, data + size);
  stream.resize(size + CommandParser::kMaxPending, 0);
  stream.insert(stream.end(), kGetWidth.begin(), kGetWidth.end());
  PrinterModel model(state);
  const std::vector<WireEvent> events = model.Receive(stream.data(), stream.size());
  Require(events.back().direction == WireEvent::Direction::kSent);
  Require(events.back().bytes == Bytes{static_cast<std::uint8_t>(state.current.print_width & 0xFF),
                                       static_cast<std::uint8_t>(state.current.print_width >> 8)});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  PrinterState state;
  const std::vector<WireEvent> whole = Run(state, data, size, std::max<std::size_t>(size, 1));
  RequireAllBytes(whole, data, size);
  for (const std::size_t piece_size : {0, 1}) {
    PrinterState other;
    RequireSame(whole, Run(other, data, size, piece_size));
    Require(state.current.print_width == other.current.print_width);
    Require(state.saved.print_width == other.saved.print_width);
    Require(state.print_data_bytes == other.print_data_bytes);
  }
  RequireAnswersAfter(state, data, size);
  return 0;
}
