// Downloads on the virtual clock, into a printer that takes all four kinds and fails where a test wants it to.
#ifndef VEXO_TESTS_CORE_DOWNLOAD_FIXTURE_H_
#define VEXO_TESTS_CORE_DOWNLOAD_FIXTURE_H_

#include <deque>

#include "core/driver_test.h"

namespace vexo::test {

using Pieces = std::vector<Bytes>;

constexpr char kRestartCommand[] = "\x1b\x1c& V1 do \"reset_printer\"\r\n";

// Bytes that repeat only after 251, so that no block looks like its neighbour.
Bytes FileContent(size_t size);

class DownloadTest : public DriverTest {
 protected:
  struct Result {
    int32_t code = 0;
    std::string trace;

    std::string LastLine() const;
  };

  DownloadTest();
  ~DownloadTest() override;

  // A file with these bytes; its name.
  std::string MakeFile(const Bytes& content);

  // Starts afresh, with the port open at time 0, and runs a download of a file with this name, or with these bytes.
  using Download = std::function<int32_t(VexoPrinterHandle*, const char* file, DownloadProgressCallback)>;
  Result Run(const char* file, const Download& download);
  Result Run(const Bytes& content, const Download& download) { return Run(MakeFile(content).c_str(), download); }

  // What the next runs do to the download. Writes and answers are counted from 0.
  int failing_write_ = -1;
  int cancelling_write_ = -1;
  std::function<void(int write)> on_write_ = {};
  std::function<Pieces(int answer, const Bytes& sound)> alter_answer_ = {};
  std::function<void(int32_t percentage)> on_progress_ = {};
  int refused_connects_ = 0;
  int32_t read_failure_ = 0;

  // What the last run did.
  Pieces written_;
  int answers_ = 0;
  int connects_ = 0;
  int reads_ = 0;
  std::vector<int32_t> progress_;

 private:
  int32_t Receive(const Bytes& bytes);
  uint32_t Send(uint8_t* buffer, uint32_t room);
  void Answer(const Bytes& sound);
  void AnswerFirmware(const Bytes& bytes);

  std::deque<Bytes> to_send_;
  uint32_t body_left_ = 0;
  std::string file_;
};

}  // namespace vexo::test

#endif  // VEXO_TESTS_CORE_DOWNLOAD_FIXTURE_H_
