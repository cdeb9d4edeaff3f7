// The answers of printers to a scan, and the list returned to hosts.
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

// The key that a scan asks for. The request contains it, an answer does not.
inline constexpr std::string_view kScanKey = "printer_message";

using ScanFields = std::array<std::string_view, kScanFieldCount>;

// Splits an answer into its lines, separated by CR LF. Missing lines are empty.
ScanFields SplitScanAnswer(std::string_view answer);

// A printer whose answer says "ready". Not copyable: its fields point into its own copy of the answer.
class ScanRecord {
 public:
  explicit ScanRecord(std::string_view answer) : answer_(answer), fields_(SplitScanAnswer(answer_)) {}
  ScanRecord(const ScanRecord&) = delete;
  ScanRecord& operator=(const ScanRecord&) = delete;
  ~ScanRecord() = default;

  const ScanFields& fields() const { return fields_; }

  // The printer's address as stated in its answer, first number in the most significant byte. Not set unless it
  // consists of four decimal numbers and dots: the text came from the network, and nothing else may be connected to.
  std::optional<uint32_t> Address() const;

  // The descriptor of the port for the follow-up query.
  std::string DescriptorOfPrinter() const;

  // Replaces two fields by IPv4 addresses, each stored last byte first. A reply that is too short for an address leaves
  // its field unchanged.
  void TakeReply(const Bytes& reply);

  // Appends the record without the "|" that ends it.
  //
  // Compatibility: cuts it off after kMaxScanRecordLength characters; hosts use buffers of 256 bytes a record.
  void AppendTo(std::string* text) const;

 private:
  static constexpr size_t kAddressCount = 2;
  static constexpr size_t kAddressSize = sizeof("255.255.255.255");

  const std::string answer_;
  char addresses_[kAddressCount][kAddressSize] = {};
  ScanFields fields_;
};

// The ready printers, in the order of their answers. A printer that answers twice has two records.
class ScanList {
 public:
  // Adds the answer if its second line is exactly "ready".
  void Add(std::string_view answer);

  bool empty() const { return records_.empty(); }
  std::deque<ScanRecord>& records() { return records_; }

  // Returns the records, each followed by "|".
  std::string Text() const;

 private:
  std::deque<ScanRecord> records_;
};

// Returns VEXO_OK, or VEXO_ERROR_BUFFER_TOO_SMALL with the buffer unchanged.
//
// Compatibility: a text of exactly `size` bytes is copied, and its terminating zero lands at buffer[size]. Hosts pass
// one less than the size of their buffer.
int32_t CopyScanText(const std::string& text, char* buffer, int32_t size);

}  // namespace vexo

#endif  // VEXO_DISCOVERY_SCAN_ANSWER_H_
