// Parses framed V2 replies and decodes the texts in them.
#ifndef VEXO_PROTOCOL_REPLY_ANALYSIS_H_
#define VEXO_PROTOCOL_REPLY_ANALYSIS_H_

#include <cstdint>
#include <string>

namespace vexo {

// Splits a V2 reply:
//
//   0   6  ESC FS "& V2"
//   6  12  fixed part; its bytes 3 and 4 are the payload length, low byte first
//   18     payload: the echoed command line up to its first CR LF, 4 status bytes, the value
//          (after a getkey: the 4 bytes of the echoed key record, then the value)
//
// All texts are byte strings, as received.
class CAnalysisCmdBase {
 public:
  // Splits the reply; valid() tells whether its frame is sound. Throws std::out_of_range when the reply to a getkey
  // ends before its value.
  //
  // Compatibility: a wrong header only clears valid(); the rest is split all the same.
  explicit CAnalysisCmdBase(const std::string& raw_reply);

  // Splits the payload. Returns VEXO_OK or VEXO_ERROR_INCOMPLETE_REPLY. The constructor calls this function, not an
  // override: a derived class that overrides it calls it again from its own constructor.
  virtual int32_t Analyse();

  // Compatibility: not virtual. Hosts that derive from the class expect no destructor in the vtable.
  ~CAnalysisCmdBase() = default;

  bool valid() const { return valid_; }
  bool status() const { return status_; }  // Whether the second status byte is not zero; true before any analysis.
  const std::string& header() const { return header_; }
  const std::string& fixed_part() const { return fixed_part_; }
  const std::string& command_line() const { return command_line_; }  // Including its CR LF; may be empty.
  const std::string& status_bytes() const { return status_bytes_; }
  const std::string& value() const { return value_; }
  const std::string& raw_reply() const { return raw_reply_; }
  const std::string& result() const { return result_; }  // A copy of the value, for callers to read.

 protected:
  bool valid_ = true;
  bool status_ = true;
  std::string header_;
  std::string fixed_part_;
  std::string command_line_;
  std::string status_bytes_;
  std::string value_;
  std::string raw_reply_;
  std::string result_;
};

// Decodes percent escapes, and "+" to a blank. `flag` is unused. Throws std::invalid_argument("Invalid URL encoding")
// when the text ends inside an escape.
//
// Compatibility: an escape is converted like strtol does: "%4z" decodes to byte 4, "%zz" to byte 0, without an error.
std::string UrlDecode(const std::string& text, uint8_t flag);

}  // namespace vexo

#endif  // VEXO_PROTOCOL_REPLY_ANALYSIS_H_
