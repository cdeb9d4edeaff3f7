// Cost of transfers through a port object, compared with plain system calls. Both alternate with the same peer, so that
// other load affects both alike. Medians are compared.
#include "bare_connection.h"

#include <string>

#include "measure.h"
#include "vexo/extend.h"

namespace vexo::benchmark {
namespace {

// Short rounds, so that both meet the same load; 64 MiB each way in total.
constexpr size_t kTransferSize = 1024 * 1024;  // As in peer.py.
constexpr int kTransferRounds = 64;
constexpr size_t kCommandSize = 21;
constexpr int kExchangeRounds = 300;
constexpr int kExchangesPerRound = 20;
constexpr VexoPortTimeouts kTimeLimits = {60'000, 0, 60'000, 0, 60'000, 60'000};

// A port object of the DLL.
class LibraryConnection {
 public:
  explicit LibraryConnection(const std::string& tcp_port) {
    Require(ScannerGunPortOpen(&handle_, ("NET,127.0.0.1," + tcp_port).c_str()) == VEXO_OK, "making the port");
    Require(port()->SetTimeouts(port(), kTimeLimits) == VEXO_OK, "setting the time limits");
    Require(port()->Open(port()) == VEXO_OK, "connecting");
  }
  LibraryConnection(const LibraryConnection&) = delete;
  LibraryConnection& operator=(const LibraryConnection&) = delete;
  ~LibraryConnection() { ScannerGunPortOpen(&handle_, ""); }

  bool Write(const std::vector<uint8_t>& bytes) {
    uint32_t written = 0;
    const auto length = static_cast<uint32_t>(bytes.size());
    return port()->Write(port(), bytes.data(), 0, length, &written) == VEXO_OK && written == length;
  }

  bool Read(std::vector<uint8_t>* bytes) {
    uint32_t read = 0;
    const auto length = static_cast<uint32_t>(bytes->size());
    return port()->Read(port(), bytes->data(), 0, length, &read) == VEXO_OK && read == length;
  }

 private:
  VexoPort* port() { return handle_.port; }

  VexoPrinterHandle handle_ = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
};

struct Times {
  double library;  // Through the port object.
  double bare;
};

// Medians of `rounds` rounds. The two alternate in going first.
template <typename LibraryWork, typename BareWork>
Times Compare(int rounds, LibraryWork library_work, BareWork bare_work) {
  library_work();
  bare_work();
  std::vector<double> library;
  std::vector<double> bare;
  for (int round = 0; round < rounds; ++round) {
    if (round % 2 == 0) {
      library.push_back(Seconds(library_work));
      bare.push_back(Seconds(bare_work));
    } else {
      bare.push_back(Seconds(bare_work));
      library.push_back(Seconds(library_work));
    }
  }
  return {Median(library), Median(bare)};
}

void MeasureWriting(const std::string& tcp_port) {
  LibraryConnection library(tcp_port);
  BareConnection bare(tcp_port);
  const std::vector<uint8_t> job(kTransferSize, 0x55);
  std::vector<uint8_t> taken(1);
  const Times times = Compare(
      kTransferRounds, [&] { Require(library.Write(job) && library.Read(&taken), "writing"); },
      [&] { Require(bare.Write(job) && bare.Read(&taken), "writing"); });
  Report("write 64 MiB, rate against select+send", times.bare / times.library, ">=", 0.97);
}

void MeasureReading(const std::string& tcp_port) {
  LibraryConnection library(tcp_port);
  BareConnection bare(tcp_port);
  const std::vector<uint8_t> request(1);
  std::vector<uint8_t> content(kTransferSize);
  const Times times = Compare(
      kTransferRounds, [&] { Require(library.Write(request) && library.Read(&content), "reading"); },
      [&] { Require(bare.Write(request) && bare.Read(&content), "reading"); });
  Report("read 64 MiB, rate against select+recv", times.bare / times.library, ">=", 0.97);
}

// The plain form of an exchange: two selects that check the connection, select and send for the command, select and
// recv for the answer.
void MeasureExchange(const std::string& tcp_port) {
  LibraryConnection library(tcp_port);
  BareConnection bare(tcp_port);
  const std::vector<uint8_t> command(kCommandSize, 0x55);
  std::vector<uint8_t> answer(1);
  const auto repeat = [](auto exchange) {
    return [=] {
      for (int i = 0; i < kExchangesPerRound; ++i) {
        Require(exchange(), "exchanging");
      }
    };
  };
  const Times times = Compare(kExchangeRounds, repeat([&] { return library.Write(command) && library.Read(&answer); }),
                              repeat([&] { return bare.IsAlive() && bare.Write(command) && bare.Read(&answer); }));
  Report("exchange, time against bare calls", times.library / times.bare, "<=", 1.1);
  std::fprintf(stderr, "an exchange takes %.1f us, with bare calls %.1f us\n", times.library / kExchangesPerRound * 1e6,
               times.bare / kExchangesPerRound * 1e6);
}

}  // namespace
}  // namespace vexo::benchmark

// Arguments: the ports of peer.py.
int main(int argc, char** argv) {
  using vexo::benchmark::Require;
  WSADATA data = {};
  Require(argc == 4 && WSAStartup(MAKEWORD(2, 2), &data) == 0, "starting");
  vexo::benchmark::MeasureWriting(argv[1]);
  vexo::benchmark::MeasureReading(argv[2]);
  vexo::benchmark::MeasureExchange(argv[3]);
  WSACleanup();
  return 0;
}
