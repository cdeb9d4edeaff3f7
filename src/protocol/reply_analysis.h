// Analysis of framed V2 replies, and the decoding of the texts in them.
#ifndef VEXO_PROTOCOL_REPLY_ANALYSIS_H_
#define VEXO_PROTOCOL_REPLY_ANALYSIS_H_

#include <cstdint>
#include <string>

namespace vexo {

// Takes a V2 reply apart:
//
//   0   6  ESC FS "& V2"
//   6  12  fixed part; its bytes 3 and 4 are the payload length, low byte first
//   18     payload: the echoed command line up to its first CR LF, 4 status bytes, the value (after a getkey: 4 bytes
//          more, the echoed key record, and then the value)
//
// All texts are byte strings, as received.
class CAnalysisCmdBase {
 public:
  // Fills everything from the reply; valid() tells the outcome. A wrong header only clears valid(): the rest is split
  // all the same. Throws std::out_of_range when the answer to a getkey ends before its value.
  explicit CAnalysisCmdBase(const std::string& raw_reply);

  // Splits the payload. 0, or -30 when it is incomplete. The constructor calls it; while that runs, an override in a
  // derived class is not yet in force, so a class with one calls it again from its own constructor.
  virtual int32_t Analyse();

  // Not virtual: hosts that derive from the class know objects without a destructor in the table.
  ~CAnalysisCmdBase() = default;

  bool valid() const { return valid_; }
  bool status() const { return status_; }  // The second status byte is not zero; true before any analysis.
  const std::string& header() const { return header_; }
  const std::string& fixed_part() const { return fixed_part_; }
  const std::string& command_line() const { return command_line_; }  // With its CR LF; empty when there is none.
  const std::string& status_bytes() const { return status_bytes_; }
  const std::string& value() const { return value_; }
  const std::string& raw_reply() const { return raw_reply_; }
  const std::string& result() const { return result_; }  // A copy of the value, what callers read.

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

// Decodes percent escapes and "+" for blank. An escape is read as the standard conversion reads a number: "%4z" gives
// the byte 4, "%zz" the byte 0. The flag byte is part of the call's form and changes nothing. Throws
// std::invalid_argument("Invalid URL encoding") for an escape that the text ends in.
std::string UrlDecode(const std::string& text, uint8_t flag);

}  // namespace vexo

#endif  // VEXO_PROTOCOL_REPLY_ANALYSIS_H_
