// Downloads by YModem.
#include <numeric>

#include "core/download_fixture.h"
#include "port/handle_port.h"
#include "support/scripted_drivers.h"

namespace vexo::test {
namespace {

constexpr char kLoader[] = "NET,loader";

class YModemDownloadTest : public DownloadTest {
 protected:
  Result Download(const Bytes& content, const char* descriptor = nullptr) {
    return Run(content, [=](auto* handle, auto* file, auto progress) {
      return downloadYModem(handle, file, descriptor, progress);
    });
  }
};

// Bit by bit over the data and 16 zero bits more.
uint16_t SlowChecksum(const Bytes& data) {
  unsigned crc = 0;
  for (size_t bit = 0; bit < (data.size() + 2) * 8; ++bit) {
    const unsigned next = bit / 8 < data.size() ? data[bit / 8] >> (7 - bit % 8) & 1U : 0U;
    crc = (crc << 1 | next) ^ ((crc & 0x8000U) != 0 ? 0x11021U : 0U);
  }
  return static_cast<uint16_t>(crc);
}

Bytes Sealed(Bytes head, const Bytes& data) {
  const uint16_t checksum = SlowChecksum(data);
  Append(&head, data);
  Append(&head, Bytes{LowByte(checksum), HighByte(checksum)});
  return head;
}

Bytes HeaderBlock(const std::string& name, size_t size) {
  Bytes data = BytesOf(name + '\0' + std::to_string(size));
  data.resize(128);
  return Sealed({1, 0, 0xFF}, data);
}

TEST_F(YModemDownloadTest, GoesThroughTheLoader) {
  const Bytes content = FileContent(1500);
  refused_connects_ = 2;
  const Result result = Download(content, kLoader);
  EXPECT_EQ(0, result.code);
  const std::string name = MakeFile(content);
  EXPECT_EQ("filename =" + name +
                "\ntotalFileSize =1500\nEnter Upgrade mode...\ndesc = NET,loader\nretry to reconnect...\n"
                "desc = NET,loader\nretry to reconnect...\ndesc = NET,loader\nShake hands before sending...\n"
                "Prepare to send packet headers...\nReady to send file...\npackage 0\npackage 1\n"
                "Sending file completed and Shake hands...\nA Empty packet at the end of sending...\n"
                "End of Sending flag...\nrestart printer...\nCompleted...\n",
            result.trace);
  Bytes first(content.begin(), content.begin() + 1024);
  Bytes second = first;  // Filled up with what the block before it left.
  std::copy(content.begin() + 1024, content.end(), second.begin());
  EXPECT_EQ((Pieces{{0x1D, 0x75, 0x55, 0xAA},
                    {'1'},
                    HeaderBlock(name, 1500),
                    Sealed({2, 1, 0xFE}, first),
                    Sealed({2, 2, 0xFD}, second),
                    {4},
                    Sealed({1, 0, 0xFF}, Bytes(128)),
                    {'3'},
                    BytesOf(kRestartCommand)}),
            written_);
  EXPECT_EQ((std::vector<int32_t>{0, 0, 50, 100}), progress_);
  EXPECT_EQ((std::vector<uint32_t>{1000, 500, 500, 500, 50, 50, 200, 200}), RecordedSleeps());
  EXPECT_EQ(0, handle_.portOpen);
  const std::vector<std::string> calls = DriverCalls();
  ASSERT_GE(calls.size(), 3U);
  EXPECT_EQ("USB Close", calls[0]);
  EXPECT_EQ("NET Configure vexo:/dev/bus/NET/DEVICE?ip=loader+port=9100", calls[2]);
}

TEST_F(YModemDownloadTest, InTheLoaderAlreadyWithAnExactMultiple) {
  const Bytes content = FileContent(2048);
  EXPECT_EQ(0, Download(content).code);
  ASSERT_EQ(9U, written_.size());
  EXPECT_EQ(Sealed({2, 2, 0xFD}, {content.begin() + 1024, content.end()}), written_[3]);
  EXPECT_EQ(Sealed({2, 3, 0xFC}, Bytes(1024)), written_[4]) << "The extra block";
  EXPECT_EQ((std::vector<int32_t>{0, 0, 33, 66, 100}), progress_);
  EXPECT_EQ(0, Download(FileContent(256 * 1024)).code);
  EXPECT_EQ((Bytes{2, 0, 0xFF}), Bytes(written_[257].begin(), written_[257].begin() + 3)) << "numbers wrap";
}

TEST_F(YModemDownloadTest, FindsTheSameUsbPrinterAgain) {
  EXPECT_EQ(0, Download({1}, "USB").code);
  EXPECT_EQ("USB Configure vexo:/dev/bus/USB/A1", DriverCalls().at(2));
}

TEST_F(YModemDownloadTest, LoaderThatNeverComes) {
  refused_connects_ = 20;
  const Result result = Download({1}, kLoader);
  EXPECT_EQ(-6006, result.code);
  EXPECT_EQ("failed:Enter Mode Failed...", result.LastLine());
  EXPECT_EQ(1U, written_.size());
  EXPECT_EQ(20, connects_);
  EXPECT_EQ(0, handle_.portOpen);
  on_write_ = [&](int) { handle_.magic = 1; };
  EXPECT_EQ(-6, Download({1}, kLoader).code);
  handle_.magic = VEXO_PRINTER_MAGIC;
}

// Steps of a file of one block with a loader: mode switch, 1, header, block, 4, closing block, 3, restart.
TEST_F(YModemDownloadTest, WriteThatFailsAtEachStep) {
  for (int write = 0; write < 8; ++write) {
    SCOPED_TRACE(write);
    failing_write_ = write;
    const Result result = Download({1}, kLoader);
    EXPECT_EQ(write == 0 ? -322 : write == 7 ? 0 : -321, result.code);
    EXPECT_EQ(write == 0   ? "write command failed..."
              : write == 7 ? "Completed..."
                           : "failed:WriteData Failed...",
              result.LastLine());
    EXPECT_EQ(write == 7 ? 0 : 1, handle_.portOpen);
  }
}

TEST_F(YModemDownloadTest, AnswersAreWaitedFor) {
  const struct {
    int answer;
    Pieces instead;
    int32_t code;
    uint32_t slept;  // In all.
  } rows[] = {{0, {}, -6008, 500 + 1000},
              {1, {}, -6008, 500 + 6 * 2000},                   // Six reads of a second each, and a second after each.
              {1, {{6}, {'C'}}, -6008, 500 + 6000 + 5 * 1000},  // In two pieces it does not count.
              {1, {{'C', 'C'}}, -6009, 500},
              {1, {{'C', 6}}, 0, 950},
              {2, {}, -6009, 550},
              {2, {{'C'}, {6}}, 0, 950},  // Collected.
              {3, {}, -6008, 750 + 1000},
              {4, {{0x15}}, -6009, 950}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    alter_answer_ = [&](int answer, const Bytes& sound) { return answer == row.answer ? row.instead : Pieces{sound}; };
    const Result result = Download({1});
    EXPECT_EQ(row.code, result.code);
    EXPECT_EQ(row.code == 0       ? "Completed..."
              : row.code == -6008 ? "failed:Data Is Missed..."
                                  : "failed:Slave Response Failed...",
              result.LastLine());
    const std::vector<uint32_t> sleeps = RecordedSleeps();
    EXPECT_EQ(row.slept, std::accumulate(sleeps.begin(), sleeps.end(), 0U));
    EXPECT_EQ(row.code == 0 ? 0 : 1, handle_.portOpen);
    if (row.answer == 2 && row.instead.empty()) {
      EXPECT_EQ(1 + 2 + 6, reads_) << "a flush, two answers, and six looks for this one";
    }
  }
}

TEST_F(YModemDownloadTest, CancelledAtEachPoint) {
  for (int write = 0; write < 6; ++write) {
    SCOPED_TRACE(write);
    cancelling_write_ = write;
    const Result result = Download(FileContent(2000), kLoader);
    // Looked at before the handshake and before each block, and never later.
    const size_t writes[] = {1, 3, 3, 4, 9, 9};
    EXPECT_EQ(write < 4 ? -6004 : 0, result.code);
    EXPECT_EQ(write < 4 ? "Cancel..." : "Completed...", result.LastLine());
    EXPECT_EQ(writes[write], written_.size());
  }
}

}  // namespace
}  // namespace vexo::test
