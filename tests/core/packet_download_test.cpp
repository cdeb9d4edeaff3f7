// Files and fonts, in packages.
#include <numeric>

#include "core/download_fixture.h"
#include "port/handle_port.h"

namespace vexo::test {
namespace {

constexpr char kFontMode[] = "\x1b\x1c& V1 do \"font_download_quick\"\r\n";

class PacketDownloadTest : public DownloadTest {
 protected:
  Result DownloadFile(const Bytes& content) {
    return Run(content,
               [](auto* handle, auto* file, auto progress) { return downloadFile(handle, file, nullptr, progress); });
  }

  Result DownloadFont(const Bytes& content, int32_t packet_size) {
    return Run(content, [=](auto* handle, auto* file, auto progress) {
      return DownloadFontFile(handle, packet_size, file, "ignored", progress);
    });
  }
};

// Built byte by byte from the layout: magic, index, count, data area, sum.
Bytes PackageOf(uint32_t index, const Bytes& file_bytes, const Bytes& filler) {
  Bytes package = {0xDD, 0xCC, 0xBB, 0xAA};
  for (int i = 0; i < 4; ++i) {
    package.push_back(static_cast<uint8_t>(index >> (8 * i)));
  }
  package.push_back(static_cast<uint8_t>(file_bytes.size() % 256));
  package.push_back(static_cast<uint8_t>(file_bytes.size() / 256));
  Append(&package, file_bytes);
  Append(&package, filler);
  const unsigned sum = std::accumulate(package.begin(), package.end(), 0U);
  package.push_back(static_cast<uint8_t>(sum % 256));
  package.push_back(static_cast<uint8_t>(sum / 256 % 256));
  return package;
}

Bytes Part(const Bytes& content, size_t from, size_t to) {
  return {content.begin() + static_cast<ptrdiff_t>(from), content.begin() + static_cast<ptrdiff_t>(to)};
}

TEST_F(PacketDownloadTest, FileTravelsInPackagesFilledWithZeros) {
  const Bytes content = FileContent(2 * 2048 + 1);
  const Result result = DownloadFile(content);
  EXPECT_EQ(0, result.code);
  EXPECT_EQ("filename =" + MakeFile(content) +
                "\ntotalFileSize =4097\nEnter Upgrade mode...\nReady to send file...\npackage 0\npackage 1\npackage 2\n"
                "restart printer...\nCompleted...\n",
            result.trace);
  EXPECT_EQ((Pieces{{0x12, 0x46},
                    PackageOf(0, Part(content, 0, 2048), {}),
                    PackageOf(1, Part(content, 2048, 4096), {}),
                    PackageOf(2, Part(content, 4096, 4097), Bytes(2047)),
                    BytesOf(kRestartCommand)}),
            written_);
  EXPECT_EQ((std::vector<int32_t>{0, 0, 33, 66, 100}), progress_);
  EXPECT_EQ((std::vector<uint32_t>{20, 20, 20}), RecordedSleeps());
  EXPECT_EQ(0, handle_.portOpen);
}

// Printers take the end of the package before as filler, but for two bytes.
TEST_F(PacketDownloadTest, FontTravelsInPackagesFilledWithTheOneBefore) {
  const Bytes content = FileContent(21);
  const Result result = DownloadFont(content, 10);
  EXPECT_EQ(0, result.code);
  EXPECT_EQ("filename =" + MakeFile(content) +
                "\ntotalFileSize =21\nEnter Upgrade mode...\nReady to send file...\npackage 0\npackage 1\npackage 2\n"
                "restart printer...\nSuccessfully restarted the device...\nCompleted...\n",
            result.trace);
  Bytes filler = Part(content, 11, 20);
  filler[0] = 0;
  EXPECT_EQ((Pieces{BytesOf(kFontMode), PackageOf(0, Part(content, 0, 10), {}), PackageOf(1, Part(content, 10, 20), {}),
                    PackageOf(2, Part(content, 20, 21), filler), BytesOf("^END"), BytesOf(kRestartCommand)}),
            written_);
  EXPECT_EQ((std::vector<int32_t>{0, 0, 33, 66, 100}), progress_);
  EXPECT_EQ(0, handle_.portOpen);
}

TEST_F(PacketDownloadTest, PackagesHaveTheSizeOfTheirLimits) {
  alter_answer_ = [](int answer, const Bytes& sound) {  // Confirmations may come in pieces.
    return answer == 0 ? Pieces{sound} : Pieces{Part(sound, 0, 1), Part(sound, 1, 11), Part(sound, 11, 12)};
  };
  const std::tuple<size_t, int32_t, size_t> rows[] = {{3, 1, 3}, {2048, 2048, 1}, {2049, 2048, 2}, {65536, 65535, 2}};
  for (const auto& [size, packet_size, packages] : rows) {
    EXPECT_EQ(0, DownloadFont(FileContent(size), packet_size).code);
    EXPECT_EQ(packages + 3, written_.size());
  }
}

// A package is sent again; the end mark of a font and the restart of a file may be lost.
TEST_F(PacketDownloadTest, WriteThatFailsAtEachStep) {
  const Bytes content = FileContent(3000);
  for (int write = 0; write < 5; ++write) {
    SCOPED_TRACE(write);
    failing_write_ = write;
    EXPECT_EQ(write == 0 ? -322 : 0, DownloadFile(content).code);
    EXPECT_EQ(write == 0, handle_.portOpen != 0);
    const Result font = DownloadFont(content, 2048);
    EXPECT_EQ(write == 0 || write == 4 ? -322 : 0, font.code);
    EXPECT_EQ(write == 0   ? "failed: WriteData failed..."
              : write == 4 ? "Reboot device failed..."
                           : "Completed...",
              font.LastLine());
    EXPECT_EQ(write == 0 || write == 4, handle_.portOpen != 0);
  }
}

TEST_F(PacketDownloadTest, AnswersAreWaitedFor) {
  const Bytes content = FileContent(3000);
  for (const Pieces& instead : {Pieces{{'O', 'X'}}, Pieces{{'O'}, {'K'}}}) {
    alter_answer_ = [&](int answer, const Bytes& sound) { return answer == 0 ? instead : Pieces{sound}; };
    EXPECT_EQ(-6006, DownloadFile(content).code);
  }
  alter_answer_ = [](int answer, const Bytes& sound) { return Pieces{answer == 0 ? BytesOf("OK!") : sound}; };
  EXPECT_EQ(0, DownloadFile(content).code) << "the rest is flushed";
  for (const int confirmed : {0, 1}) {
    alter_answer_ = [&](int answer, const Bytes& sound) { return answer > confirmed ? Pieces{} : Pieces{sound}; };
    const Result result = DownloadFile(content);
    EXPECT_EQ(-6009, result.code);
    EXPECT_EQ("failed:Slave Response Failed.........", result.LastLine());
    EXPECT_EQ(2 + 1 + confirmed + 4 * 31, reads_) << "two flushes, the answers, and four times 31 looks";
  }
}

// Only silence is waited for.
TEST_F(PacketDownloadTest, ReadThatFailsEndsTheAnswerAtOnce) {
  read_failure_ = -331;
  EXPECT_EQ(-6006, DownloadFile({1}).code);
  EXPECT_EQ(2, reads_);
  EXPECT_TRUE(RecordedSleeps().empty());
}

TEST_F(PacketDownloadTest, CancelledAtEachPoint) {
  const Bytes content = FileContent(5000);
  on_progress_ = [this](int32_t) {
    if (progress_.size() == 2) {  // When package 0 is confirmed.
      setCancel();
    }
  };
  EXPECT_EQ(-6004, DownloadFile(content).code);
  EXPECT_EQ(2U, written_.size());
  on_progress_ = nullptr;
  for (int write = 0; write < 5; ++write) {
    SCOPED_TRACE(write);
    cancelling_write_ = write;
    const Result result = DownloadFont(content, 2048);
    EXPECT_EQ(write == 0 ? -6004 : write <= 3 ? -6009 : 0, result.code);
    EXPECT_EQ(write == 0   ? "Cancel..."
              : write <= 3 ? "failed:Slave Response Failed........."
                           : "Completed...",
              result.LastLine());
  }
  cancelling_write_ = -1;
  setCancel();
  EXPECT_EQ(0, DownloadFile(content).code) << "A request from before is forgotten.";
}

TEST_F(PacketDownloadTest, BadArgumentsOfAllDownloads) {
  const std::pair<Download, const char*> rows[] = {
      {[](auto* h, auto* f, auto p) { return downloadFile(h, f, nullptr, p); }, "failed:file is null.file is null."},
      {[](auto* h, auto* f, auto p) { return DownloadFontFile(h, 1, f, nullptr, p); }, "failed: The file is empty."},
      {[](auto* h, auto* f, auto p) { return DownloadFMWImg(h, f, "NET,1", p); }, "failed:file is null."},
      {[](auto* h, auto* f, auto p) { return downloadYModem(h, f, "NET,1", p); }, "failed:file is null."}};
  for (const auto& [download, empty_trace] : rows) {
    const std::string good = MakeFile({1});
    VexoPrinterHandle bad = {559, nullptr, nullptr, 1};
    VexoPrinterHandle closed = {VEXO_PRINTER_MAGIC, nullptr, handle_.port, 0};
    EXPECT_EQ(-6, download(&bad, good.c_str(), nullptr));
    EXPECT_EQ(-309, download(&closed, good.c_str(), nullptr));
    for (const char* name : {static_cast<const char*>(nullptr), "missing/file"}) {
      const Result result = Run(name, download);
      EXPECT_EQ(-1, result.code);
      EXPECT_EQ("error parameters.", result.trace);
    }
    const Result empty = Run(Bytes(), download);
    EXPECT_EQ(-6007, empty.code);
    EXPECT_EQ("filename =" + MakeFile({}) + "\n" + empty_trace, empty.trace);
    EXPECT_TRUE(written_.empty() && progress_.empty());
  }
  for (const int32_t packet_size : {0, 65536}) {
    EXPECT_EQ(-1, DownloadFont({1}, packet_size).code);
    EXPECT_TRUE(written_.empty());
  }
}

// The port goes away under the download: every later use of the handle finds that.
TEST_F(PacketDownloadTest, HandleThatLosesItsPort) {
  const int32_t codes[] = {-6006, -6009, -6009, -309};
  for (int lost_at = 0; lost_at < 4; ++lost_at) {
    on_write_ = [&](int write) { handle_.portOpen = write >= lost_at ? 0 : 1; };
    EXPECT_EQ(codes[lost_at], DownloadFont(FileContent(3000), 2048).code) << lost_at;
  }
  on_write_ = [&](int write) { handle_.magic = write == 3 ? 1 : VEXO_PRINTER_MAGIC; };
  const Result file = DownloadFile(FileContent(3000));
  EXPECT_EQ(-6, file.code);
  EXPECT_EQ("Completed...", file.LastLine());
  handle_.magic = VEXO_PRINTER_MAGIC;
}

}  // namespace
}  // namespace vexo::test
