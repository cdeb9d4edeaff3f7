#include "virtual_printer/wire/trace.h"

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <utility>

namespace virtual_printer {
namespace {

constexpr std::size_t kBytesInRow = 16;
constexpr std::size_t kRowWidth = kBytesInRow * 3;  // Two digits and a space each.

std::string FormatRow(const Bytes& bytes, std::size_t offset) {
  std::string row;
  const std::size_t end = std::min(bytes.size(), offset + kBytesInRow);
  for (std::size_t i = offset; i < end; ++i) {
    row.append(HexText(bytes[i], 2)).append(" ");
  }
  return row;
}

std::string FormatHead(std::chrono::milliseconds time, int connection) {
  std::ostringstream head;
  head << std::fixed << std::setprecision(3) << std::setw(9) << static_cast<double>(time.count()) / 1000;
  if (connection == kDatagrams) {
    head << " udp ";
  } else {
    head << " #" << connection << ' ';
  }
  return head.str();
}

}  // namespace

std::string FormatTraceEntry(std::chrono::milliseconds time, const WireEvent& event) {
  const auto& [bytes, text, pause] = event.message;
  std::string entry = FormatHead(time, event.connection);
  if (event.direction == WireEvent::Direction::kNote) {
    return entry.append(text).append("\n");
  }
  entry.append(event.direction == WireEvent::Direction::kReceived ? "-> " : "<- ");
  const std::size_t indent = entry.size();

  std::string first_row = FormatRow(bytes, 0);
  first_row.resize(kRowWidth, ' ');
  entry.append(first_row).append(" ").append(text).append("\n");

  for (std::size_t offset = kBytesInRow; offset < bytes.size(); offset += kBytesInRow) {
    std::string row = FormatRow(bytes, offset);
    row.back() = '\n';
    entry.append(indent, ' ').append(row);
  }
  return entry;
}

void Trace::Write(const WireEvent& event) {
  if (out_ != nullptr) {
    const auto elapsed = std::chrono::steady_clock::now() - start_;
    *out_ << FormatTraceEntry(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed), event) << std::flush;
  }
}

void Trace::Note(int connection, std::string text) {
  Write({connection, WireEvent::Direction::kNote, {{}, std::move(text)}});
}

}  // namespace virtual_printer
