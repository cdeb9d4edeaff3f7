// For any data from a host, the virtual printer must process each byte once, buffer only a limited amount, react the
// same however the bytes are fragmented, report job starts and ends in order, and still answer afterwards.
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "require.h"
#include "virtual_printer/downloads/download_receiver.h"
#include "virtual_printer/model/printer_model.h"

namespace {

using std::chrono::milliseconds;
using virtual_printer::Bytes;
using virtual_printer::CommandParser;
using virtual_printer::PrinterMode;
using virtual_printer::PrinterModel;
using virtual_printer::PrinterSetup;
using virtual_printer::Time;
using virtual_printer::WireEvent;

constexpr int kHost = 1;
constexpr int kWatcher = 2;
constexpr milliseconds kLongEnough{24 * 3600 * 1000};

// The bytes exchanged in one run. Print data events are joined, so that they do not depend on the fragmentation.
struct Record {
  std::vector<std::pair<Bytes, std::string>> received;
  std::vector<std::pair<Bytes, std::string>> sent;  // To the host.
  std::vector<std::string> watched;                 // To a second host.

  void Append(const PrinterModel::Events& events) {
    for (const WireEvent& event : events) {
      if (event.connection == kWatcher) {
        watched.push_back(event.message.text);
      } else if (event.direction == WireEvent::Direction::kSent) {
        sent.emplace_back(event.message.bytes, event.message.text);
      } else {
        AppendReceived(event.message.bytes, event.message.text);
      }
    }
  }

  void AppendReceived(const Bytes& bytes, const std::string& text) {
    const std::string data = "print data";
    const bool is_data = text.compare(0, data.size(), data) == 0;
    if (is_data && !received.empty() && received.back().second == data) {
      received.back().first.insert(received.back().first.end(), bytes.begin(), bytes.end());
    } else {
      received.emplace_back(bytes, is_data ? data : text);
    }
  }
};

enum class Pieces { kWhole, kBytes, kByTheData };

std::size_t PieceSize(Pieces pieces, std::uint8_t next, std::size_t left) {
  switch (pieces) {
    case Pieces::kWhole:
      return left;
    case Pieces::kBytes:
      return 1;
    case Pieces::kByTheData:
      break;
  }
  return std::min<std::size_t>(left, 1 + next % 32);
}

// Advances the time until nothing is pending.
void RunUntilIdle(PrinterModel& model, Time& now, Record& record) {
  now += kLongEnough;
  record.Append(model.Advance(now));
  Require(!model.NextDeadline());
}

struct Run {
  Run() : model({}) {
    constexpr std::string_view kOn = "\x1B\x1C& V1 setval \"job_monitor\" \"on\"\r\n";
    model.Connect(kWatcher);
    model.Receive(kWatcher, reinterpret_cast<const std::uint8_t*>(kOn.data()), kOn.size(), now);
    model.Connect(kHost);
  }

  // Waits for `pause` before each piece.
  void Feed(const std::uint8_t* data, std::size_t size, Pieces pieces, milliseconds pause) {
    for (std::size_t offset = 0; offset < size;) {
      const std::size_t piece = PieceSize(pieces, data[offset], size - offset);
      now += pause;
      record.Append(model.Receive(kHost, data + offset, piece, now));
      Require(model.PendingBytes(kHost) <= CommandParser::kMaxPending);
      Require(!model.NextDeadline() || *model.NextDeadline() > now);
      offset += piece;
    }
  }

  void Finish() {
    record.Append(model.Disconnect(kHost, now));
    RunUntilIdle(model, now, record);
  }

  PrinterModel model;
  Record record;
  Time now;
};

void RequireAllBytes(const Record& record, const std::uint8_t* data, std::size_t size) {
  Bytes received;
  for (const auto& [bytes, text] : record.received) {
    received.insert(received.end(), bytes.begin(), bytes.end());
  }
  Require(received == Bytes(data, data + size));
}

// Each job must end before the next one starts.
void RequireJobsInOrder(const Record& record) {
  std::string printing;
  for (const std::string& text : record.watched) {
    const std::string type = text.substr(0, 10);
    const std::string task = text.substr(12, 9);
    Require(type == (printing.empty() ? "report 256" : "report 257"));
    Require(printing.empty() || task == printing);
    printing = printing.empty() ? task : std::string();
  }
  Require(printing.empty());
}

// After enough noise to complete any command, the printer must answer again.
void RequireAnswersAfter(const std::uint8_t* data, std::size_t size) {
  constexpr std::string_view kGetWidth("\x1B\x1C& V1 getkey\r\n\x01\xCC\x00\x02", 19);
  Bytes stream(data, data + size);
  stream.resize(size + CommandParser::kMaxPending, 0);
  stream.insert(stream.end(), kGetWidth.begin(), kGetWidth.end());
  Run run;
  run.Feed(stream.data(), stream.size(), Pieces::kWhole, milliseconds(0));
  const std::uint16_t width = run.model.State().current.print_width;
  Require(run.record.sent.back().first ==
          Bytes{static_cast<std::uint8_t>(width & 0xFF), static_cast<std::uint8_t>(width >> 8)});
}

// The rules for commands and print data do not apply to downloads.
bool MayDownload(std::string_view input) {
  constexpr std::string_view kSwitches[] = {virtual_printer::kFileModeSwitch, virtual_printer::kLoaderModeSwitch,
                                            "font_download_quick", "dfu", "reset_printer"};
  return std::any_of(std::begin(kSwitches), std::end(kSwitches),
                     [&](std::string_view bytes) { return input.find(bytes) != std::string_view::npos; });
}

// A host that downloads and reconnects whenever the printer drops the connection.
struct DownloadRun {
  explicit DownloadRun(PrinterMode mode) : model(SetupFor(mode)) { model.Connect(kHost); }

  static PrinterSetup SetupFor(PrinterMode mode) {
    PrinterSetup setup;
    setup.downloads.mode = mode;
    return setup;
  }

  // The bytes lost with a dropped connection depend on the fragmentation; nothing before does.
  void Feed(const std::uint8_t* data, std::size_t size, Pieces pieces, bool until_dropped) {
    for (std::size_t offset = 0; offset < size && !(until_dropped && dropped);) {
      const std::size_t piece = PieceSize(pieces, data[offset], size - offset);
      record.Append(model.Receive(kHost, data + offset, piece, now));
      Require(model.PendingBytes(kHost) <= virtual_printer::kMaxPackageSize);
      CarryOutSideEffects();
      offset += piece;
    }
    record.Append(model.Disconnect(kHost, now));
    RunUntilIdle(model, now, record);
    CarryOutSideEffects();
    std::size_t completed = 0;
    for (const Bytes& download : downloads) {
      completed += download.size();
    }
    Require(completed <= size);
  }

  void CarryOutSideEffects() {
    virtual_printer::SideEffects side_effects = model.TakeSideEffects();
    for (auto& completed : side_effects.completed) {
      downloads.push_back(std::move(completed.download.data));
    }
    if (side_effects.outage) {
      dropped = true;
      record.Append(model.Disconnect(kHost, now));
      model.Connect(kHost);
    }
  }

  PrinterModel model;
  Record record;
  std::vector<Bytes> downloads;
  bool dropped = false;
  Time now;
};

void CheckDownloads(const std::uint8_t* data, std::size_t size, PrinterMode mode) {
  DownloadRun persistent(mode);
  persistent.Feed(data, size, Pieces::kByTheData, /*until_dropped=*/false);

  // The printer may infer a font's package size from the end of a piece.
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  if (input.find("font_download_quick") == std::string_view::npos) {
    DownloadRun whole(mode);
    whole.Feed(data, size, Pieces::kWhole, /*until_dropped=*/true);
    DownloadRun bytes(mode);
    bytes.Feed(data, size, Pieces::kBytes, /*until_dropped=*/true);
    Require(whole.record.sent == bytes.record.sent);
    Require(whole.downloads == bytes.downloads);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CheckDownloads(data, size, PrinterMode::kYmodemLoader);
  CheckDownloads(data, size, PrinterMode::kFirmwareLoader);
  if (MayDownload({reinterpret_cast<const char*>(data), size})) {
    CheckDownloads(data, size, PrinterMode::kOrdinary);
    return 0;
  }

  Run whole;
  whole.Feed(data, size, Pieces::kWhole, milliseconds(0));
  whole.Finish();
  RequireAllBytes(whole.record, data, size);
  RequireJobsInOrder(whole.record);

  for (const Pieces pieces : {Pieces::kBytes, Pieces::kByTheData}) {
    Run other;
    other.Feed(data, size, pieces, milliseconds(0));
    other.Finish();
    Require(other.record.received == whole.record.received);
    Require(other.record.sent == whole.record.sent);
    Require(other.record.watched == whole.record.watched);
    Require(other.model.State().current.print_width == whole.model.State().current.print_width);
    Require(other.model.State().saved.print_width == whole.model.State().saved.print_width);
    Require(other.model.State().print_data_bytes == whole.model.State().print_data_bytes);
  }

  // Pauses split jobs differently, but must lose no data.
  for (const int pause : {90, 700}) {
    Run paused;
    paused.Feed(data, size, Pieces::kByTheData, milliseconds(pause));
    paused.Finish();
    RequireAllBytes(paused.record, data, size);
    RequireJobsInOrder(paused.record);
  }
  RequireAnswersAfter(data, size);
  return 0;
}
