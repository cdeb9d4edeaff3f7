#include "core/download_fixture.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <numeric>

#include "port/handle_port.h"
#include "support/allocation_faults.h"

namespace vexo::test {
namespace {

constexpr size_t kFirmwareHeaderSize = 76;

std::function<void(int32_t)> g_on_progress;

bool IsPackage(const Bytes& bytes) {
  static const Bytes kMagic = {0xDD, 0xCC, 0xBB, 0xAA};
  return bytes.size() > 12 && std::equal(kMagic.begin(), kMagic.end(), bytes.begin());
}

Bytes ConfirmationOf(const Bytes& package) {
  Bytes answer(package.begin(), package.begin() + 8);
  const unsigned sum = std::accumulate(answer.begin(), answer.end(), 0U);
  Append(&answer, Bytes{0, 0, LowByte(sum), HighByte(sum)});
  return answer;
}

}  // namespace

Bytes FileContent(size_t size) {
  Bytes content(size);
  for (size_t i = 0; i < size; ++i) {
    content[i] = static_cast<uint8_t>(i % 251 + 1);
  }
  return content;
}

std::string DownloadTest::Result::LastLine() const {
  const size_t end = trace.find_last_not_of('\n');
  const size_t before = end == std::string::npos ? end : trace.find_last_of('\n', end);
  return trace.substr(before == std::string::npos ? 0 : before + 1, end - before);
}

DownloadTest::DownloadTest() {
  const auto* const test = ::testing::UnitTest::GetInstance()->current_test_info();
  file_ = ::testing::TempDir() + test->test_suite_name() + '_' + test->name() + '_' + std::to_string(getpid());
}

DownloadTest::~DownloadTest() { std::remove(file_.c_str()); }

std::string DownloadTest::MakeFile(const Bytes& content) {
  std::ofstream file(file_, std::ios::binary);
  file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
  return file_;
}

DownloadTest::Result DownloadTest::Run(const char* file, const Download& download) {
  SetDriverScript({});
  EXPECT_EQ(0, ReconnectHandle(&handle_, "vexo:/dev/bus/USB/DEVICE?sn=A1"));
  DriverScript script;
  script.on_write = [this](const uint8_t* bytes, uint32_t length) { return Receive(Bytes(bytes, bytes + length)); };
  script.on_read = [this](uint8_t* buffer, uint32_t room) { return Send(buffer, room); };
  script.read_failure = read_failure_;
  connects_ = 0;
  reads_ = 0;
  script.on_open = [this] { return ++connects_ <= refused_connects_ ? VEXO_ERROR_IO_OPEN_FAILED : VEXO_OK; };
  SetDriverScript(script);
  SetClock(0);
  written_.clear();
  to_send_.clear();
  answers_ = 0;
  body_left_ = 0;
  progress_.clear();
  g_on_progress = [this](int32_t percentage) {
    const UncountedAllocations uncounted;
    progress_.push_back(percentage);
    if (on_progress_) {
      on_progress_(percentage);
    }
  };
  ::testing::internal::CaptureStdout();
  Result result;
  result.code = download(&handle_, file, [](int32_t percentage) { g_on_progress(percentage); });
  result.trace = ::testing::internal::GetCapturedStdout();
  return result;
}

int32_t DownloadTest::Receive(const Bytes& bytes) {
  const int write = static_cast<int>(written_.size());
  written_.push_back(bytes);
  if (on_write_) {
    on_write_(write);
  }
  if (write == cancelling_write_) {
    setCancel();
  }
  if (write == failing_write_) {
    return VEXO_ERROR_IO_WRITE_TIMEOUT;
  }
  if (body_left_ > 0 || bytes.size() == kFirmwareHeaderSize) {
    AnswerFirmware(bytes);
  } else if (bytes == Bytes{0x12, 0x46} || bytes == BytesOf("\x1b\x1c& V1 do \"font_download_quick\"\r\n")) {
    Answer({'O', 'K'});
  } else if (IsPackage(bytes)) {
    Answer(ConfirmationOf(bytes));
  } else if (bytes == Bytes{'1'}) {
    Answer({'C'});
  } else if (bytes == Bytes{4} || bytes.size() == 1029) {
    Answer({6});
  } else if (bytes.size() == 133) {
    const bool closing = bytes[3] == 0;
    Answer(closing ? Bytes{6} : Bytes{6, 'C'});
  }
  return VEXO_OK;
}

void DownloadTest::AnswerFirmware(const Bytes& bytes) {
  if (body_left_ == 0) {
    body_left_ = ReadLittleEndian32(bytes.data() + 4);
    Answer({0});
  } else {
    body_left_ -= static_cast<uint32_t>(bytes.size());
  }
  if (body_left_ == 0) {
    Answer({0});
  }
}

void DownloadTest::Answer(const Bytes& sound) {
  const int answer = answers_++;
  const Pieces pieces = alter_answer_ ? alter_answer_(answer, sound) : Pieces{sound};
  to_send_.insert(to_send_.end(), pieces.begin(), pieces.end());
}

uint32_t DownloadTest::Send(uint8_t* buffer, uint32_t room) {
  ++reads_;
  if (to_send_.empty()) {
    return 0;
  }
  Bytes& piece = to_send_.front();
  const auto count = static_cast<uint32_t>(std::min<size_t>(room, piece.size()));
  std::copy_n(piece.begin(), count, buffer);
  piece.erase(piece.begin(), piece.begin() + count);
  if (piece.empty()) {
    to_send_.pop_front();
  }
  return count;
}

}  // namespace vexo::test
