#include "vexoctl/support/captured_output.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <new>
#include <system_error>
#include <utility>

#include "vexoctl/console/failure.h"

namespace vexoctl {
namespace {

constexpr int kStandardOutput = 1;
constexpr unsigned kPipeSize = 4096;
constexpr char kCaptureAction[] = "cannot read the library's messages";

// Makes the system's standard output the C runtime's, which does so itself in some programs only.
void UpdateSystemHandle() {
  const intptr_t handle = _get_osfhandle(kStandardOutput);
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the C runtime returns handles as numbers.
  SetStdHandle(STD_OUTPUT_HANDLE, handle < 0 ? nullptr : reinterpret_cast<HANDLE>(handle));
}

}  // namespace

CapturedOutput::CapturedOutput(LineHandler handler) : handler_(std::move(handler)) {
  int ends[2] = {};
  if (_pipe(ends, kPipeSize, _O_BINARY | _O_NOINHERIT) != 0) {
    throw Failure(kCaptureAction, ERROR_TOO_MANY_OPEN_FILES);
  }
  const auto [read_end, write_end] = ends;
  try {
    reader_ = std::thread(&CapturedOutput::HandleLines, this, read_end);
  } catch (const std::system_error&) {
    _close(read_end);
    _close(write_end);
    throw Failure(kCaptureAction, ERROR_TOO_MANY_TCBS);
  }
  Redirect(write_end);
}

CapturedOutput::~CapturedOutput() { End(); }

void CapturedOutput::End() {
  if (reader_.joinable()) {
    Restore();
    reader_.join();
  }
}

// Leaves the standard output as the only writer of the pipe, so that restoring it ends the reading.
void CapturedOutput::Redirect(int write_end) {
  static_cast<void>(std::fflush(stdout));
  original_ = _dup(kStandardOutput);
  const bool redirected = _dup2(write_end, kStandardOutput) == 0;
  _close(write_end);
  if (!redirected) {
    End();
    throw Failure(kCaptureAction, ERROR_TOO_MANY_OPEN_FILES);
  }
  UpdateSystemHandle();
}

void CapturedOutput::Restore() {
  static_cast<void>(std::fflush(stdout));
  if (original_ < 0) {
    _close(kStandardOutput);
  } else {
    _dup2(original_, kStandardOutput);
    _close(original_);
  }
  UpdateSystemHandle();
}

// Always reads to the end: otherwise the writer would wait for ever for room in the pipe.
void CapturedOutput::HandleLines(int read_end) {
  char piece[512];
  for (int read = _read(read_end, piece, sizeof piece); read > 0; read = _read(read_end, piece, sizeof piece)) {
    Add({piece, static_cast<size_t>(read)});
  }
  if (!line_.empty()) {
    Add("\n");
  }
  _close(read_end);
}

// A line for which there is no memory is lost.
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
