#ifndef VIRTUAL_PRINTER_WIRE_COMMAND_PARSER_H_
#define VIRTUAL_PRINTER_WIRE_COMMAND_PARSER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/wire/bytes.h"

namespace virtual_printer {

// What commands begin with, where others than the parser must tell them from the bytes of a download.
inline constexpr std::string_view kV1Opening = "\x1B\x1C& V1 ";
inline constexpr std::string_view kFileModeSwitch = "\x12\x46";
inline constexpr std::string_view kLoaderModeSwitch = "\x1D\x75\x55\xAA";

// A command taken apart. A V1 command is a line of text: `do "save_param_zone"` has the verb do and the arguments
// "save_param_zone", quotes included.
struct Command {
  enum class Kind {
    kV1,
    kGsH,                 // GS ( H: two bytes of length, and a body.
    kClearTasks,          // A fixed byte string, of hosts that send V1 commands.
    kClearTasksRealTime,  // Another one, of hosts that send GS ( H.
    kFileMode,            // Packages of a file follow.
    kLoaderMode,          // The host wants to speak to the loader.
    kNetworkDetails,      // A host that found the printer on the network asks for more.
  };

  Kind kind = Kind::kV1;
  std::string verb;
  std::string arguments;
  Bytes record;  // The binary record of setkey and getkey, empty when none followed the line; the body of a GS ( H.
};

// One stretch of what a host sent. The bytes of all frames, one after the other, are exactly what was received.
struct Frame {
  enum class Kind {
    kPrintData,
    kCommand,
    kUnfinishedCommand,  // Another command began, or the connection ended, before this one was complete.
    kOverlongCommand,    // No line end within the longest line that the printer has room for.
  };

  Kind kind = Kind::kPrintData;
  Bytes bytes;
  Command command;  // Filled for kCommand only.
};

// Finds the commands in the stream of one connection, which may arrive in pieces of any size. Whatever is not a command
// is print data, as on a real printer; so noise never stops it from seeing the next command.
class CommandParser {
 public:
  // Longest command line, prefix and line end included. Lines in use stay far below.
  static constexpr std::size_t kMaxLineLength = 256;
  // Count, key low, key high, value length; then the value of a setkey, whose length is a single byte.
  static constexpr std::size_t kRecordHeaderLength = 4;
  static constexpr std::size_t kMaxPending = kMaxLineLength + kRecordHeaderLength + 255;

  // Adds the frames that are complete by these bytes, and gives how many bytes it took: all of them, unless a command
  // ended that may change how the stream goes on. Print data is reported at the end of each call; only bytes that may
  // be the beginning of a command are held back.
  std::size_t Feed(const std::uint8_t* data, std::size_t size, std::vector<Frame>& frames);

  // The stream has ended: reports what was held back.
  std::vector<Frame> Finish();

  // Bytes held back until the rest of their command arrives, at most kMaxPending.
  std::size_t PendingBytes() const { return pending_.size(); }

 private:
  enum class State { kPrintData, kLine, kRecord, kGsH, kGsHTail };

  void TakeByte(std::uint8_t byte);
  void TakeTextByte(std::uint8_t byte);
  void TakeRecordByte(std::uint8_t byte);
  void TakeGsHByte(std::uint8_t byte);
  void TakeGsHTail(std::uint8_t byte);
  void BeginCommand(Command::Kind kind);
  void ContinueLine();
  void EndLine();
  void EndCommand();
  bool RecordIsComplete() const;
  std::string_view LineText() const;
  void Emit(Frame::Kind kind, std::size_t size, Command command = {});

  State state_ = State::kPrintData;
  Bytes pending_;
  std::size_t matched_ = 0;       // How many bytes at the end of pending_ may be the opening of a command.
  Command command_;               // The command whose record or body is being received...
  std::size_t record_start_ = 0;  // ...and where in pending_ that part begins.
  std::vector<Frame> frames_;
  bool stopped_ = false;  // Behind a command that may change how the stream goes on.
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_WIRE_COMMAND_PARSER_H_
