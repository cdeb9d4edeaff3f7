#include "monitor/report_decoder.h"

#include <sstream>

#include "core/core_test.h"

namespace vexo::test {
namespace {

using namespace std::string_literals;
using Reports = std::vector<std::string>;

constexpr ProtocolFamily kGsParenH = ProtocolFamily::kGsParenH;
constexpr ProtocolFamily kV1 = ProtocolFamily::kV1;

// "event 101 task 42 value 7"; the type is hexadecimal.
std::string Describe(const DecodeStep& step) {
  const ReportRecord& record = step.record;
  std::ostringstream text;
  text << (record.kind == RecordKind::kJobEvent ? "event " : "reply ") << std::hex << record.type << std::dec;
  text << (record.task_id != 0 ? " task " + std::to_string(record.task_id) : "");
  text << (record.value != 0 ? " value " + std::to_string(record.value) : "") << (step.tracking_reset ? " reset" : "");
  return text.str();
}

// Decodes a stream that arrives in pieces.
class Stream {
 public:
  explicit Stream(ProtocolFamily family) : family_(family) {}

  // Returns the reports that are now complete.
  Reports Receive(const std::string& bytes) {
    rest_ += bytes;
    Reports reports;
    for (;;) {
      const DecodeStep step = DecodeNextReport(reinterpret_cast<const uint8_t*>(rest_.data()), rest_.size(), family_);
      EXPECT_LE(step.consumed, rest_.size());
      rest_.erase(0, step.consumed);
      if (step.record.kind == RecordKind::kEmpty) {
        return reports;
      }
      reports.push_back(Describe(step));
    }
  }

  const std::string& rest() const { return rest_; }

 private:
  const ProtocolFamily family_;
  std::string rest_;
};

TEST(ReportDecoder, FindsReportsAmongJunk) {
  const std::string header = "\x1b\x1c& V1 report";
  const std::string junk = "It has printed \x1b and \x1b\x1c& V1 repo \x37\x23\x00 "s;
  const std::string long_tail(20, 'x');
  const struct {
    ProtocolFamily family;
    std::string bytes;
    Reports reports;
    size_t waiting = 0;  // Undecoded bytes at the end.
  } rows[] = {
      {kV1, "", {}},
      {kV1, long_tail, {}, 13},
      {kV1, Started("0042"), {"event 100 task 42"}},
      {kV1, Ended("0042", 0xFFFFFFFF), {"event 101 task 42 value 4294967295"}},
      {kV1, Frame(0x101, "?0042\x07\x01\x01"), {"event 101 task 42"}},  // Missing fields are 0.
      {kV1, Frame(0x100, "?004"), {"event 100"}},
      {kV1, Frame(0x102, "?0009"), {"reply 102 task 9"}},
      {kV1, Frame(0x103, "?0009abcd"), {"reply 103"}},
      {kV1, ValueReply(0x04030201), {"reply 104 value 67305985"}},
      {kV1, Frame(0xABCD, "?0009abcd"), {"reply abcd task 9"}},
      {kV1, junk + Started("0001"), {"event 100 task 1"}},
      {kV1, Started("0001") + junk + Ended("0001", 2), {"event 100 task 1", "event 101 task 1 value 2"}},
      {kV1, Started("0001") + Started("0002") + long_tail, {"event 100 task 1", "event 100 task 2"}, 13},
      {kV1, "\x1b" + Started("0001"), {"event 100 task 1"}},
      {kV1, header.substr(0, 12) + Started("0001"), {"event 100 task 1"}},
      {kV1, Frame(0x103, "?" + Started("0001")), {"reply 103"}},
      {kGsParenH, "7\"0012\0"s, {"event 22 task 12"}},
      {kGsParenH, "7\" -7x\0"s, {"event 22 task -7"}},  // Parsed as by strtol.
      {kGsParenH, "7\"+-12\0"s, {"event 22"}},
      {kGsParenH, "7AB", {"reply 41"}},
      {kGsParenH, "77#", {"reply 37"}},
      {kGsParenH, "777#\0\0"s, {"reply 37"}, 2},
      {kGsParenH, "ab7#7c7\"-001\0d7$e"s, {"event 23", "event 22 task -1", "reply 24 reset"}},
      {kGsParenH, "7\"0012", {}, 6},
      {kGsParenH, "noise", {}, 2},
      {kGsParenH, "7#7" + Started("0042") + "7$7", {"event 23", "event 100 task 42", "reply 24 reset"}},
      {kGsParenH, header.substr(0, 12) + "7#7", {"event 23"}},
      {kGsParenH, "7\x1b\x1c" + Started("0042"), {"reply 1b", "event 100 task 42"}},
      {kGsParenH, "x" + header.substr(0, 5), {}, 5},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    Stream stream(row.family);
    EXPECT_EQ(row.reports, stream.Receive(row.bytes));
    EXPECT_EQ(row.bytes.substr(row.bytes.size() - row.waiting), stream.rest());
  }
}

// Compatibility: a frame is decoded when as many bytes have arrived as its payload is long, counted from its start.
TEST(ReportDecoder, FrameIsDecodedEarly) {
  const std::string frame = Ended("0420", 0x0201);
  for (const ProtocolFamily family : {kGsParenH, kV1}) {
    for (size_t size = 0; size < frame.size(); ++size) {
      Stream stream(family);
      const Reports reports = stream.Receive(frame.substr(0, size));
      const std::string taken = size < 22 ? "event 101" : "event 101 task 420";
      EXPECT_EQ(size < 17 ? Reports{} : Reports{taken}, reports) << size;
      EXPECT_EQ(size < 17 ? size : 0, stream.rest().size()) << size;
      // The remaining bytes count as junk and must not hide the next report.
      EXPECT_EQ("event 100 task 7", stream.Receive(frame.substr(size) + Started("0007")).back()) << size;
    }
  }
}

}  // namespace
}  // namespace vexo::test
