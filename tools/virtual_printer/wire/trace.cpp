#include "virtual_printer/wire/trace.h"

#include "virtual_printer/wire/trace_format.h"

namespace virtual_printer {

void Trace::Event(const WireEvent& event) {
  if (out_ != nullptr) {
    const char* arrow = event.direction == WireEvent::Direction::kReceived ? "->" : "<-";
    *out_ << FormatTraceEntry(Now(), event.connection, arrow, event.message.bytes, event.message.text) << std::flush;
  }
}

void Trace::Note(int connection, std::string_view text) {
  if (out_ != nullptr) {
    *out_ << FormatTraceNote(Now(), connection, text) << std::flush;
  }
}

std::chrono::milliseconds Trace::Now() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_);
}

}  // namespace virtual_printer
