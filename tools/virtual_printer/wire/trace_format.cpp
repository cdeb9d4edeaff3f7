#include "virtual_printer/wire/trace_format.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

#include "virtual_printer/wire/hex_text.h"

namespace virtual_printer {
namespace {

constexpr std::size_t kBytesInRow = 16;
constexpr std::size_t kRowWidth = kBytesInRow * 3;  // Two digits and a blank each.

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

std::string FormatTraceEntry(std::chrono::milliseconds time, int connection, std::string_view arrow, const Bytes& bytes,
                             std::string_view text) {
  std::string entry = FormatHead(time, connection);
  entry.append(arrow).append(" ");
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

std::string FormatTraceNote(std::chrono::milliseconds time, int connection, std::string_view text) {
  return FormatHead(time, connection).append(text).append("\n");
}

}  // namespace virtual_printer
