// What printers answer to a scan, and the list that hosts get of it.
#ifndef VEXO_DISCOVERY_SCAN_ANSWER_H_
#define VEXO_DISCOVERY_SCAN_ANSWER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "protocol/bytes.h"

namespace vexo {

constexpr size_t kScanFieldCount = 16;
constexpr size_t kMaxScanRecordLength = 255;

// The key that a scan asks for. An answer never names it, the question does.
inline constexpr std::string_view kScanKey = "printer_message";

using ScanFields = std::array<std::string_view, kScanFieldCount>;

// The lines of an answer, which CR LF separates; those that are missing are empty.
ScanFields SplitScanAnswer(std::string_view answer);

// A printer that says "ready". Its fields point into its own copy of the answer, so it stays where it is.
class ScanRecord {
 public:
  explicit ScanRecord(std::string_view answer) : answer_(answer), fields_(SplitScanAnswer(answer_)) {}
  ScanRecord(const ScanRecord&) = delete;
  ScanRecord& operator=(const ScanRecord&) = delete;
  ~ScanRecord() = default;

  const ScanFields& fields() const { return fields_; }

  // The address that the printer gives itself, first number in the high byte. None unless it is four decimal numbers
  // with dots: the text came from the network, and nothing else may be connected to.
  std::optional<uint32_t> Address() const;

  // Names the port on which the printer tells more.
  std::string DescriptorOfPrinter() const;

  // Two IPv4 addresses, each stored from its last byte to its first, replace fields; a reply that ends too early for
  // one leaves that field.
  void TakeReply(const Bytes& reply);

  // Without the "|" that ends each record of a list; cut off after kMaxScanRecordLength characters.
  void AppendTo(std::string* text) const;

 private:
  static constexpr size_t kAddressCount = 2;
  static constexpr size_t kAddressSize = sizeof("255.255.255.255");

  const std::string answer_;
  char addresses_[kAddressCount][kAddressSize] = {};
  ScanFields fields_;
};

// Ready printers, in the order of their answers.
class ScanList {
 public:
  // Takes the answer when its second line is exactly "ready".
  void Add(std::string_view answer);

  bool empty() const { return records_.empty(); }
  std::deque<ScanRecord>& records() { return records_; }

  // The records, with a "|" behind each.
  std::string Text() const;

 private:
  std::deque<ScanRecord> records_;
};

// A text of exactly `size` bytes has its terminating zero behind them: hosts count on that bound. 0, or -2 with the
// buffer as it was.
int32_t CopyScanText(const std::string& text, char* buffer, int32_t size);

}  // namespace vexo

#endif  // VEXO_DISCOVERY_SCAN_ANSWER_H_
