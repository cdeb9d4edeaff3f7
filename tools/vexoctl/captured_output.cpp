#include "vexoctl/captured_output.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <new>
#include <system_error>
#include <utility>

#include "vexoctl/failure.h"

namespace vexoctl {
namespace {

constexpr int kStandardOutput = 1;
constexpr unsigned kPipeSize = 4096;
constexpr char kAction[] = "cannot read the library's messages";

// The C runtime moves the system's idea of the standard output along with its own in some programs only.
void TellSystem() {
  const intptr_t handle = _get_osfhandle(kStandardOutput);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the C runtime has handles as numbers.
  SetStdHandle(STD_OUTPUT_HANDLE, handle < 0 ? nullptr : reinterpret_cast<HANDLE>(handle));
}

}  // namespace

CapturedOutput::CapturedOutput(LineHandler handler) : handler_(std::move(handler)) {
  int ends[2] = {};
  if (_pipe(ends, kPipeSize, _O_BINARY | _O_NOINHERIT) != 0) {
    throw Failure(kAction, ERROR_TOO_MANY_OPEN_FILES);
  }
  const auto [pipe_exit, pipe_entry] = ends;
  try {
    reader_ = std::thread(&CapturedOutput::HandleLines, this, pipe_exit);
  } catch (const std::system_error&) {
    _close(pipe_exit);
    _close(pipe_entry);
    throw Failure(kAction, ERROR_TOO_MANY_TCBS);
  }
  Redirect(pipe_entry);
}

CapturedOutput::~CapturedOutput() { End(); }

void CapturedOutput::End() {
  if (reader_.joinable()) {
    Restore();
    reader_.join();
  }
}

// Afterwards the standard output is the only way into the pipe, so that connecting it elsewhere ends the reading.
void CapturedOutput::Redirect(int pipe_entry) {
  static_cast<void>(std::fflush(stdout));
  original_ = _dup(kStandardOutput);
  const bool redirected = _dup2(pipe_entry, kStandardOutput) == 0;
  _close(pipe_entry);
  if (!redirected) {
    End();
    throw Failure(kAction, ERROR_TOO_MANY_OPEN_FILES);
  }
  TellSystem();
}

void CapturedOutput::Restore() {
  static_cast<void>(std::fflush(stdout));
  if (original_ < 0) {
    _close(kStandardOutput);
  } else {
    _dup2(original_, kStandardOutput);
    _close(original_);
  }
  TellSystem();
}

// Reads to the end whatever happens: the writer would wait for ever for room in the pipe.
void CapturedOutput::HandleLines(int pipe_exit) {
  char piece[512];
  for (int read = _read(pipe_exit, piece, sizeof piece); read > 0; read = _read(pipe_exit, piece, sizeof piece)) {
    Add({piece, static_cast<size_t>(read)});
  }
  if (!line_.empty()) {
    Add("\n");
  }
  _close(pipe_exit);
}

// What there is no memory for is lost.
void CapturedOutput::Add(std::string_view piece) try {
  for (const char character : piece) {
    if (character == '\n') {
      handler_(line_);
      line_.clear();
    } else if (character != '\r') {
      line_ += character;
    }
  }
} catch (const std::bad_alloc&) {
  line_.clear();
}

}  // namespace vexoctl
