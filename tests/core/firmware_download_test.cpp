// Firmware images, segment by segment.
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "core/download_fixture.h"
#include "support/scripted_drivers.h"

namespace vexo::test {
namespace {

constexpr size_t kHeaderSize = 76;

Bytes Segment(uint32_t length, size_t body_size) {
  Bytes segment = FileContent(kHeaderSize);
  StoreLittleEndian32(segment.data() + 4, length);
  Append(&segment, FileContent(body_size));
  return segment;
}

Bytes ImageOf(const std::vector<uint32_t>& bodies) {
  Bytes image;
  for (const uint32_t size : bodies) {
    Append(&image, Segment(size, size));
  }
  return image;
}

// While it is being captured.
off_t TraceSize() {
  struct stat status = {};
  fstat(STDOUT_FILENO, &status);
  return status.st_size;
}

class FirmwareDownloadTest : public DownloadTest {
 protected:
  Result Download(const Bytes& image, const char* descriptor = "NET,dfu") {
    return Run(image, [=](auto* handle, auto* file, auto progress) {
      return DownloadFMWImg(handle, file, descriptor, progress);
    });
  }

  Bytes WrittenFrom(size_t first) const {
    Bytes all;
    for (size_t i = first; i < written_.size(); ++i) {
      Append(&all, written_[i]);
    }
    return all;
  }
};

TEST_F(FirmwareDownloadTest, ConnectsAnewForEachSegment) {
  const Bytes image = ImageOf({2500, 0, 10});
  const Result result = Download(image);
  EXPECT_EQ(0, result.code);
  const std::string distributed = "Successfully distributed...\n";
  EXPECT_EQ("filename =" + MakeFile(image) + "\ntotalFileSize =2738\nEnter Upgrade mode...\n" + distributed +
                distributed + distributed + distributed + distributed + distributed +
                "Download firmware complete...\nSuccessfully restarted the device...\n",
            result.trace);
  EXPECT_EQ(BytesOf("\x1b\x1c& V1 do \"dfu\"\r\n"), written_[0]);
  Bytes expected = image;
  Append(&expected, kRestartCommand);
  EXPECT_EQ(expected, WrittenFrom(1));
  ASSERT_EQ(9U, written_.size());
  EXPECT_EQ(1024U, written_[2].size());
  EXPECT_EQ((std::vector<int32_t>{37, 74, 91, 100, 100, 91, 100}), progress_);
  EXPECT_EQ((std::vector<uint32_t>{200, 200, 200}), RecordedSleeps());
  EXPECT_EQ(3, connects_);
  EXPECT_EQ(1, OpenDevices());
  EXPECT_EQ(VEXO_PORT_NET, handle_.port->kind);
}

// Hosts tell these from success by the last line alone.
TEST_F(FirmwareDownloadTest, FailureAtEachStep) {
  const Bytes image = ImageOf({1500, 10});
  const char* const write_failed = "failed: WriteData failed...";
  const char* const lines[] = {
      "write command failed...", write_failed, write_failed, write_failed, write_failed, write_failed,
      "Reboot device failed..."};
  for (int write = 0; write < 7; ++write) {
    SCOPED_TRACE(write);
    failing_write_ = write;
    const Result result = Download(image);
    EXPECT_EQ(-322, result.code);
    EXPECT_EQ(lines[write], result.LastLine());
    EXPECT_EQ(1, handle_.portOpen);
  }
  failing_write_ = -1;
  for (int failing = 0; failing < 4; ++failing) {
    for (const Pieces& instead : {Pieces{}, Pieces{{1}}}) {
      SCOPED_TRACE(testing::Message() << failing << ", " << instead.size());
      alter_answer_ = [&](int answer, const Bytes& sound) { return answer == failing ? instead : Pieces{sound}; };
      const Result result = Download(image);
      EXPECT_EQ(0, result.code);
      EXPECT_EQ(instead.empty() ? "failed: ReadData failed..." : "failed: ReadData error...", result.LastLine());
      // A body is waited for a hundred times longer than a header.
      const size_t reads = !instead.empty() ? 0 : failing % 2 == 0 ? 1 : 100;
      EXPECT_EQ(failing / 2 + 1 + 5 * reads, RecordedSleeps().size());
    }
  }
  alter_answer_ = nullptr;
  refused_connects_ = 1;
  const Result refused = Download(image);
  EXPECT_EQ(0, refused.code);
  EXPECT_EQ("Openfail", refused.LastLine());
  EXPECT_EQ(0, handle_.portOpen);
  refused_connects_ = 0;
  EXPECT_EQ("Openfail", Download(image, nullptr).LastLine());
  on_write_ = [this](int) { handle_.magic = 1; };
  EXPECT_EQ("Openfail", Download(image).LastLine());
  handle_.magic = VEXO_PRINTER_MAGIC;
}

TEST_F(FirmwareDownloadTest, CancelledAtEachPoint) {
  const Bytes image = ImageOf({1500, 10});
  for (int write = 0; write < 7; ++write) {
    SCOPED_TRACE(write);
    cancelling_write_ = write;
    const Result result = Download(image);
    EXPECT_EQ(write < 5 ? -6004 : 0, result.code);
    EXPECT_EQ(write < 5 ? "Cancel..." : "Successfully restarted the device...", result.LastLine());
    EXPECT_EQ(write < 5 ? write + 1U : 7U, written_.size());
  }
}

// Such an image has no other end: a host checks its images, or cancels.
TEST_F(FirmwareDownloadTest, ImageThatDoesNotAddUpRepeatsItselfUntilCancelled) {
  for (const uint32_t announced : {11U, 0xFFFFFFFFU}) {
    std::thread canceller;
    on_write_ = [&](int write) {
      if (write == 1) {
        canceller = std::thread([enough = TraceSize() + 10'000] {
          while (TraceSize() < enough) {
            std::this_thread::yield();
          }
          setCancel();
        });
      }
    };
    const Result result = Download(Segment(announced, 10));
    canceller.join();
    EXPECT_EQ(-6004, result.code);
    EXPECT_EQ("Cancel...", result.LastLine());
    EXPECT_EQ(2U, written_.size());
  }
}

// They are sent as the beginning of a header, and nothing follows them.
TEST_F(FirmwareDownloadTest, FewBytesBehindTheLastSegmentEndTheImage) {
  for (const size_t surplus : {1, 75}) {
    Bytes image = ImageOf({10});
    const Bytes more = FileContent(surplus);
    Append(&image, more);
    const Result result = Download(image);
    EXPECT_EQ(0, result.code);
    EXPECT_EQ("Successfully restarted the device...", result.LastLine());
    ASSERT_EQ(5U, written_.size());
    Bytes header = more;
    header.resize(kHeaderSize);
    EXPECT_EQ(header, written_[3]);
    EXPECT_EQ(2, connects_);
  }
}

// Only its own bytes are sent; the printer, which waits for the others, is what fails.
TEST_F(FirmwareDownloadTest, FileThatShrinksIsNotCompletedWithOtherBytes) {
  const Bytes image = ImageOf({200000, 10});
  bool shrunk = false;
  on_progress_ = [&](int32_t) {
    if (!shrunk) {
      shrunk = true;
      MakeFile(Bytes(image.begin(), image.begin() + 150000));
    }
  };
  const Result result = Download(image);
  EXPECT_EQ(0, result.code);
  EXPECT_EQ("failed: ReadData failed...", result.LastLine());
  EXPECT_EQ((std::vector<int32_t>{99, 100}), (std::vector<int32_t>(progress_.end() - 2, progress_.end())));
  EXPECT_EQ(Bytes(image.begin(), image.begin() + 150000), WrittenFrom(1));
}

}  // namespace
}  // namespace vexo::test
