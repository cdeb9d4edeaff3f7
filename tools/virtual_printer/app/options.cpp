#include "virtual_printer/app/options.h"

#include <CLI/CLI.hpp>
#include <asio.hpp>
#include <chrono>
#include <string>
#include <vector>

namespace virtual_printer {
namespace {

constexpr int kMaxNumber = 0xFFFF;
constexpr int kMaxMilliseconds = 3600 * 1000;
constexpr int kMaxBytes = 1000 * 1000 * 1000;
constexpr int kMaxPrinters = 200;
constexpr std::size_t kMaxScanText = 32;

constexpr char kJobs[] = "Print jobs";
constexpr char kDownloads[] = "Downloads";
constexpr char kNetworkScan[] = "Network scan";
constexpr char kFaults[] = "Faults";

#ifdef _WIN32
constexpr char kLineOption[] = "--pipe";
constexpr char kLineName[] = "NAME";
constexpr char kLineDescription[] = "Serve a named pipe as a USB printer; no TCP unless --port is given";
constexpr char kOtherLineOption[] = "--serial";
constexpr char kNoOtherLine[] = "Windows has no pseudo terminals; use --pipe";

std::string CheckLine(const std::string& text) {
  constexpr std::size_t kMaxLength = 247;  // Windows allows 256 characters, including the prefix of the name.
  const bool valid = !text.empty() && text.size() <= kMaxLength && text.find('\\') == std::string::npos;
  return valid ? std::string() : "'" + text + "' is not a name for a pipe";
}
#else
constexpr char kLineOption[] = "--serial";
constexpr char kLineName[] = "LINK";
constexpr char kLineDescription[] = "Create a pseudo terminal and this link to it; no TCP unless --port is given";
constexpr char kOtherLineOption[] = "--pipe";
constexpr char kNoOtherLine[] = "only Windows has named pipes; use --serial";

std::string CheckLine(const std::string& text) { return text.empty() ? "the link has no name" : std::string(); }
#endif

std::string CheckAddress(const std::string& text) {
  std::error_code error;
  asio::ip::make_address(text, error);
  return error ? text + " is not an IP address" : std::string();
}

std::string CheckDownloadFault(const std::string& text) {
  return ParseDownloadFault(text) ? std::string() : text + " is not KIND@STEP or KIND@STEPxCOUNT";
}

// Hosts list printers with a ";" between the lines of an answer and a "|" between printers.
std::string CheckScanText(const std::string& text) {
  const bool valid = !text.empty() && text.size() <= kMaxScanText && text.find_first_of(";|\r\n") == std::string::npos;
  return valid ? std::string() : "'" + text + "' is not 1 to 32 characters without ; and |";
}

class CommandLine {
 public:
  CommandLine() {
    AddPrinterOptions();
    AddJobOptions();
    AddDownloadOptions();
    AddScanOptions();
    AddFaultOptions();
  }

  std::optional<Options> Parse(int argc, char** argv, int* exit_status) {
    try {
      app_.parse(argc, argv);
      RequireAddressToScan();
    } catch (const CLI::ParseError& error) {
      *exit_status = app_.exit(error);
      return std::nullopt;
    }
    if (options_.line.empty() || port_option_->count() > 0) {
      options_.port = port_;
    }
    if (split_option_->count() > 0) {
      options_.faults.split_pause = std::chrono::milliseconds(split_pause_);
    }
    return options_;
  }

 private:
  void AddPrinterOptions() {
    app_.add_option("--address", options_.address, "IP address to listen on")
        ->check(CheckAddress)
        ->capture_default_str();
    port_option_ = app_.add_option("--port", port_, "Port to listen on; 0 for any free port")
                       ->check(CLI::Range(0, kMaxNumber))
                       ->capture_default_str();
    AddLineOptions();
    app_.add_option("--width", options_.printer.zone.print_width, "Print width at the start, in dots")
        ->check(CLI::Range(0, kMaxNumber))
        ->capture_default_str();
    app_.add_flag("--trace", options_.trace, "Print what is received and sent");
    app_.add_flag("--once", options_.once, "Exit after the first connection has ended");
    app_.add_flag("--console", options_.console, "Read commands from standard input; help lists them");
  }

  void AddLineOptions() {
    app_.add_option(kLineOption, options_.line, kLineDescription)
        ->check(CLI::Validator(CheckLine, ""))
        ->option_text(kLineName);
    const auto refuse = [](const std::string&) { throw CLI::ValidationError(kOtherLineOption, kNoOtherLine); };
    app_.add_option_function<std::string>(kOtherLineOption, refuse)->group("");  // Hidden in the help.
  }

  void AddJobOptions() {
    PrinterSetup& printer = options_.printer;
    AddTime("--job-time", printer.job_times.printing, "Print each job for this many milliseconds", kJobs);
    AddTime("--job-gap", printer.job_times.quiet, "End a job after this many milliseconds without data", kJobs);
    app_.add_option("--status", printer.status, "Status at the start, for status requests and ends of jobs")
        ->capture_default_str()
        ->group(kJobs);
    AddFamily("--family", printer.forced_family, "Form of all reports, whatever the host has chosen");
    AddFamily("--monitoring", printer.monitoring, "Start with monitoring on for the first connection");
    app_.add_flag("--task-over", printer.task_over,
                  "Also send a V2 answer at the end of a job to the host that sent it")
        ->group(kJobs);
  }

  void AddDownloadOptions() {
    DownloadSetup& downloads = options_.printer.downloads;
    const auto set_mode = [&downloads](const std::string& text) {
      downloads.mode = text == "firmware" ? PrinterMode::kFirmwareLoader : PrinterMode::kYmodemLoader;
    };
    const auto add_faults = [&downloads](const std::vector<std::string>& texts) {
      for (const std::string& text : texts) {
        downloads.faults.push_back(*ParseDownloadFault(text));
      }
    };
    app_.add_option("--store", options_.store, "Store downloads as files in this folder")
        ->check(CLI::ExistingDirectory)
        ->group(kDownloads);
    app_.add_option("--loader-port", options_.loader_port, "Port of the loaders; the printer's port unless given")
        ->check(CLI::Range(1, kMaxNumber))
        ->group(kDownloads);
    AddTime("--loader-delay", downloads.loader_delay, "Start a loader in this many milliseconds", kDownloads);
    AddTime("--restart-time", downloads.restart_time, "Restart the printer in this many milliseconds", kDownloads);
    app_.add_option_function<std::string>("--loader", set_mode, "Start as this loader instead of the printer")
        ->check(CLI::IsMember({"ymodem", "firmware"}))
        ->option_text("ymodem|firmware")
        ->group(kDownloads);
    app_.add_option_function<std::vector<std::string>>("--fault", add_faults, "Make answers in a download fail")
        ->check(CLI::Validator(CheckDownloadFault, ""))
        ->option_text("KIND@STEP[xCOUNT] ...")
        ->group(kDownloads);
  }

  void AddScanOptions() {
    NetworkIdentity& identity = options_.printer.identity;
    const CLI::Validator scan_text(CheckScanText, "");
    CLI::Option* const discoverable =
        app_.add_flag("--discoverable", options_.discoverable, "Answer network scans for printers")
            ->group(kNetworkScan);
    const auto add_scan_option = [&](const std::string& name, auto& value, const std::string& description) {
      return app_.add_option(name, value, description)->capture_default_str()->needs(discoverable)->group(kNetworkScan);
    };
    add_scan_option("--name", identity.name, "Name in answers to scans")->check(scan_text);
    add_scan_option("--state", identity.state, "State in answers; hosts list printers that are ready")
        ->check(scan_text);
    add_scan_option("--count", options_.count, "Number of printers, each on the address after the one before")
        ->check(CLI::Range(1, kMaxPrinters))
        ->excludes("--once")
        ->excludes("--console");
  }

  void AddFaultOptions() {
    ConnectionFaults& faults = options_.faults;
    AddTime("--delay", faults.delay, "Delay each answer by this many milliseconds", kFaults);
    app_.add_flag("--silent", faults.silent, "Carry out commands without answering")->group(kFaults);
    split_option_ =
        app_.add_option("--split", split_pause_, "Send answers in single bytes, this many milliseconds apart")
            ->expected(0, 1)
            ->default_str(std::to_string(split_pause_))
            ->check(CLI::Range(1, kMaxMilliseconds))
            ->group(kFaults);
    app_.add_option("--drop-after", faults.drop_after, "Drop each connection after receiving this many bytes")
        ->check(CLI::Range(1, kMaxBytes))
        ->group(kFaults);
  }

  void AddTime(const std::string& name, std::chrono::milliseconds& time, const std::string& description,
               const std::string& group) {
    app_.add_option_function<int>(
            name, [&time](int value) { time = std::chrono::milliseconds(value); }, description)
        ->check(CLI::Range(0, kMaxMilliseconds))
        ->default_str(std::to_string(time.count()))
        ->group(group);
  }

  void AddFamily(const std::string& name, std::optional<ReportFamily>& family, const std::string& description) {
    const auto set_family = [&family](const std::string& text) {
      family = text == "v1" ? ReportFamily::kV1 : ReportFamily::kGsH;
    };
    app_.add_option_function<std::string>(name, set_family, description)
        ->check(CLI::IsMember({"v1", "gs"}))
        ->option_text("v1|gs")
        ->group(kJobs);
  }

  // CLI11 checks single options only.
  void RequireAddressToScan() const {
    const auto address = asio::ip::make_address(options_.address);
    if (options_.discoverable && (!address.is_v4() || address.is_unspecified())) {
      throw CLI::ValidationError("--discoverable", "needs the printer's own IPv4 address as --address");
    }
  }

  CLI::App app_{"Simulates a receipt printer on a TCP port or on a line.", "virtual_printer"};
  Options options_;
  std::uint16_t port_ = 9100;
  const CLI::Option* port_option_ = nullptr;
  int split_pause_ = static_cast<int>(kDefaultSplitPause.count());
  const CLI::Option* split_option_ = nullptr;
};

}  // namespace

std::optional<Options> ParseOptions(int argc, char** argv, int* exit_status) {
  return CommandLine().Parse(argc, argv, exit_status);
}

}  // namespace virtual_printer
