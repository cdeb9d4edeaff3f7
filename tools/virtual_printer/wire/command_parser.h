#ifndef VIRTUAL_PRINTER_WIRE_COMMAND_PARSER_H_
#define VIRTUAL_PRINTER_WIRE_COMMAND_PARSER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {

// Command prefixes that download receivers, too, must recognize.
inline constexpr std::string_view kV1Prefix = "\x1B\x1C& V1 ";
inline constexpr std::string_view kFileModeSwitch = "\x12\x46";
inline constexpr std::string_view kLoaderModeSwitch = "\x1D\x75\x55\xAA";

// A parsed command. A V1 command is a line of text: `do "save_param_zone"` has the verb do and the arguments
// "save_param_zone", quotes included.
struct Command {
  enum class Kind {
    kV1,
    kGsH,                 // GS ( H: a length of two bytes, and a body.
    kClearTasks,          // As sent by hosts of the V1 family...
    kClearTasksRealTime,  // ...and of the GS ( H family.
    kFileMode,            // Packages of a file follow.
    kLoaderMode,          // Start the YModem loader.
    kNetworkDetails,      // Sent by a host that found the printer on the network.
  };

  Kind kind = Kind::kV1;
  std::string verb;
  std::string arguments;
  Bytes record;  // The record of setkey or getkey, empty if the line has none; or the body of GS ( H.

  bool IsV1(std::string_view expected_verb, std::string_view expected_arguments) const {
    return kind == Kind::kV1 && verb == expected_verb && arguments == expected_arguments;
  }
};

// The line of a V1 command, in printable characters.
std::string LineText(const Command& command);

// A section of the stream. The bytes of all frames together are exactly the bytes received.
struct Frame {
  enum class Kind {
    kPrintData,
    kCommand,
    kUnfinishedCommand,  // Another command began, or the connection ended, before the command was complete.
    kOverlongCommand,    // No line end within the maximum line length.
  };

  Kind kind = Kind::kPrintData;
  Bytes bytes;
  Command command;  // For kCommand only.
};

// Finds the commands in the byte stream of one connection, which may arrive in pieces of any size. Anything that is not
// a command is print data, as on a real printer, so noise never hides the next command.
class CommandParser {
 public:
  // Maximum length of a command line, including prefix and line end. Lines in use are far shorter.
  static constexpr std::size_t kMaxLineLength = 256;
  // Count, key low, key high, value length. In a setkey the value follows.
  static constexpr std::size_t kRecordHeaderLength = 4;
  static constexpr std::size_t kMaxPending = kMaxLineLength + kRecordHeaderLength + 255;

  // Replaces `frames` by the frames that these bytes complete. Returns how many bytes were consumed: all of them, or
  // those up to a command that may change the meaning of what follows. Print data is never held back, except for bytes
  // that may be the start of a command.
  std::size_t Feed(const std::uint8_t* data, std::size_t size, std::vector<Frame>& frames);

  // Ends the stream: returns the bytes held back.
  std::vector<Frame> Finish();

  // Number of bytes held back until their command is complete, at most kMaxPending.
  std::size_t PendingBytes() const { return pending_.size(); }

 private:
  enum class State { kPrintData, kLine, kRecord, kGsH, kGsHTrailer };

  void ConsumeByte(std::uint8_t byte);
  void ConsumeTextByte(std::uint8_t byte);
  void ConsumeRecordByte(std::uint8_t byte);
  void ConsumeGsHByte(std::uint8_t byte);
  void ConsumeGsHTrailer(std::uint8_t byte);
  void BeginCommand(Command::Kind kind);
  void ContinueLine();
  void EndLine();
  void EndCommand();
  bool RecordIsComplete() const;
  std::string_view Line() const;
  void Emit(Frame::Kind kind, std::size_t size, Command command = {});

  State state_ = State::kPrintData;
  Bytes pending_;
  std::size_t matched_ = 0;       // Number of bytes at the end of pending_ that may be the start of a command.
  Command command_;               // The command whose record or body is being received...
  std::size_t record_start_ = 0;  // ...and the offset of that part in pending_.
  std::vector<Frame> frames_;
  bool stopped_ = false;  // After a command that may change the meaning of what follows.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_COMMAND_PARSER_H_
