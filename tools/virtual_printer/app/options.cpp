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

std::string CheckAddress(const std::string& text) {
  std::error_code error;
  asio::ip::make_address(text, error);
  return error ? text + " is not an IP address" : std::string();
}

#ifdef _WIN32
constexpr char kLineOption[] = "--pipe";
constexpr char kLineName[] = "NAME";
constexpr char kLineDescription[] = "Serve the named pipe of this name as a USB printer, TCP only if --port is given";
constexpr char kOtherLineOption[] = "--serial";
constexpr char kNoOtherLine[] = "Windows has no pseudo terminals; --pipe serves a named pipe";

std::string CheckLine(const std::string& text) {
  constexpr std::size_t kMaxLength = 247;  // Windows takes 256 characters, with what stands before the name.
  const bool sound = !text.empty() && text.size() <= kMaxLength && text.find('\\') == std::string::npos;
  return sound ? std::string() : "'" + text + "' is not a name for a pipe";
}
#else
constexpr char kLineOption[] = "--serial";
constexpr char kLineName[] = "LINK";
constexpr char kLineDescription[] = "Make a pseudo terminal with this link to it, TCP only if --port is given";
constexpr char kOtherLineOption[] = "--pipe";
constexpr char kNoOtherLine[] = "only Windows has named pipes; --serial makes a pseudo terminal";

std::string CheckLine(const std::string& text) { return text.empty() ? "the link has no name" : std::string(); }
#endif

// The line that this system has, and a word about the one that it has not.
void AddLineOptions(CLI::App& app, Options& options) {
  app.add_option(kLineOption, options.line, kLineDescription)
      ->check(CLI::Validator(CheckLine, ""))
      ->option_text(kLineName);
  const auto refuse = [](const std::string&) { throw CLI::ValidationError(kOtherLineOption, kNoOtherLine); };
  app.add_option_function<std::string>(kOtherLineOption, refuse)->group("");  // Not shown in the help.
}

// An option that names a family.
void AddFamily(CLI::App& app, const std::string& name, std::optional<ReportFamily>& family,
               const std::string& description, const std::string& group) {
  const auto set_family = [&family](const std::string& text) {
    family = text == "v1" ? ReportFamily::kV1 : ReportFamily::kGsH;
  };
  app.add_option_function<std::string>(name, set_family, description)
      ->check(CLI::IsMember({"v1", "gs"}))
      ->option_text("v1|gs")
      ->group(group);
}

std::string CheckDownloadFault(const std::string& text) {
  return ParseDownloadFault(text) ? std::string() : text + " is not KIND@STEP or KIND@STEPxCOUNT";
}

void AddDownloadOptions(CLI::App& app, Options& options) {
  const std::string group = "Downloads";
  DownloadSetup& downloads = options.printer.downloads;
  const auto add_time = [&](const std::string& name, std::chrono::milliseconds& time, const std::string& description) {
    app.add_option_function<int>(
           name, [&time](int value) { time = std::chrono::milliseconds(value); }, description)
        ->check(CLI::Range(0, kMaxMilliseconds))
        ->default_str(std::to_string(time.count()))
        ->group(group);
  };
  const auto set_mode = [&downloads](const std::string& text) {
    downloads.mode = text == "firmware" ? PrinterMode::kFirmwareLoader : PrinterMode::kYmodemLoader;
  };
  const auto add_fault = [&downloads](const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
      downloads.faults.push_back(*ParseDownloadFault(text));
    }
  };
  app.add_option("--store", options.store, "Keep what is downloaded as files in this folder")
      ->check(CLI::ExistingDirectory)
      ->group(group);
  app.add_option("--loader-port", options.loader_port, "Port of the loaders; that of the printer unless given")
      ->check(CLI::Range(1, kMaxNumber))
      ->group(group);
  add_time("--loader-delay", downloads.loader_delay, "A loader takes this many milliseconds to start");
  add_time("--restart-time", downloads.restart_time, "The printer takes this many milliseconds to restart");
  app.add_option_function<std::string>("--loader", set_mode, "Start as this loader in place of the printer")
      ->check(CLI::IsMember({"ymodem", "firmware"}))
      ->option_text("ymodem|firmware")
      ->group(group);
  app.add_option_function<std::vector<std::string>>("--fault", add_fault, "Let an answer of a download go wrong")
      ->check(CLI::Validator(CheckDownloadFault, ""))
      ->option_text("KIND@STEP[xCOUNT] ...")
      ->group(group);
}

// A ";" parts the lines of an answer from each other where hosts list them, a "|" the printers.
std::string CheckScanText(const std::string& text) {
  const bool fits = !text.empty() && text.size() <= kMaxScanText && text.find_first_of(";|\r\n") == std::string::npos;
  return fits ? std::string() : "'" + text + "' is not 1 to 32 characters without ; and |";
}

void AddScanOptions(CLI::App& app, Options& options) {
  const std::string group = "Network scan";
  NetworkIdentity& identity = options.printer.identity;
  const CLI::Validator scan_text(CheckScanText, "");
  CLI::Option* const discoverable =
      app.add_flag("--discoverable", options.discoverable, "Answer hosts that scan the network for printers")
          ->group(group);
  app.add_option("--name", identity.name, "Name told to them")
      ->check(scan_text)
      ->capture_default_str()
      ->needs(discoverable)
      ->group(group);
  app.add_option("--state", identity.state, "State told to them; hosts list printers that are ready")
      ->check(scan_text)
      ->capture_default_str()
      ->needs(discoverable)
      ->group(group);
  app.add_option("--count", options.count, "Be so many printers at once, each on the address behind the one before")
      ->check(CLI::Range(1, kMaxPrinters))
      ->capture_default_str()
      ->needs(discoverable)
      ->excludes("--once")
      ->excludes("--console")
      ->group(group);
}

// Thrown where CLI11 can only judge one option at a time.
void RequireAddressToScan(const Options& options) {
  const auto address = asio::ip::make_address(options.address);
  if (options.discoverable && (!address.is_v4() || address.is_unspecified())) {
    throw CLI::ValidationError("--discoverable", "needs an IPv4 address of the printer's own as --address");
  }
}

}  // namespace

std::optional<Options> ParseOptions(int argc, char** argv, int* exit_status) {
  Options options;
  PrinterSetup& printer = options.printer;
  std::uint16_t port = 9100;
  int delay = 0;
  int split = static_cast<int>(kDefaultSplitPause.count());
  int job_time = static_cast<int>(printer.job_times.printing.count());
  int job_gap = static_cast<int>(printer.job_times.quiet.count());
  std::size_t drop_after = 0;

  CLI::App app("A receipt printer without paper: listens on a TCP port, or a line, and answers as a printer does.",
               "virtual_printer");
  app.add_option("--address", options.address, "Address to listen on")->check(CheckAddress)->capture_default_str();
  const CLI::Option* port_option = app.add_option("--port", port, "Port to listen on; 0 takes any free one")
                                       ->check(CLI::Range(0, kMaxNumber))
                                       ->capture_default_str();
  AddLineOptions(app, options);
  app.add_option("--width", printer.zone.print_width, "Print width at the start, in dots")
      ->check(CLI::Range(0, kMaxNumber))
      ->capture_default_str();
  app.add_flag("--trace", options.trace, "Show what is received and sent");
  app.add_flag("--once", options.once, "Take one connection and exit when it has ended");

  app.add_flag("--console", options.console, "Take commands on standard input; help shows them");

  const std::string jobs = "Print jobs";
  app.add_option("--job-time", job_time, "Print each job for this many milliseconds")
      ->check(CLI::Range(0, kMaxMilliseconds))
      ->capture_default_str()
      ->group(jobs);
  app.add_option("--job-gap", job_gap, "Take a pause of this many milliseconds in the data for the end of a job")
      ->check(CLI::Range(0, kMaxMilliseconds))
      ->capture_default_str()
      ->group(jobs);
  app.add_option("--status", printer.status, "Status at the start, as the host asks for it and at the end of a job")
      ->capture_default_str()
      ->group(jobs);
  AddFamily(app, "--family", printer.family, "Report in this manner, whatever the host has asked for", jobs);
  AddFamily(app, "--monitoring", printer.monitoring, "Send the first connection reports without being asked", jobs);
  app.add_flag("--task-over", printer.task_over, "Tell the host that sent a job of its end in a V2 answer, too")
      ->group(jobs);

  AddDownloadOptions(app, options);
  AddScanOptions(app, options);

  const std::string misbehaviour = "Misbehaviour";
  app.add_option("--delay", delay, "Work this many milliseconds on each answer")
      ->check(CLI::Range(0, kMaxMilliseconds))
      ->group(misbehaviour);
  app.add_flag("--silent", options.faults.silent, "Take everything, answer nothing")->group(misbehaviour);
  const CLI::Option* split_option =
      app.add_option("--split", split, "Send answers in single bytes, this many milliseconds apart")
          ->expected(0, 1)
          ->default_str(std::to_string(split))
          ->check(CLI::Range(1, kMaxMilliseconds))
          ->group(misbehaviour);
  const CLI::Option* drop_option =
      app.add_option("--drop-after", drop_after, "Drop a connection when it has brought this many bytes")
          ->check(CLI::Range(1, kMaxBytes))
          ->group(misbehaviour);

  try {
    app.parse(argc, argv);
    RequireAddressToScan(options);
  } catch (const CLI::ParseError& error) {
    *exit_status = app.exit(error);
    return std::nullopt;
  }

  if (options.line.empty() || port_option->count() > 0) {
    options.port = port;
  }
  printer.job_times = {std::chrono::milliseconds(job_time), std::chrono::milliseconds(job_gap)};
  options.faults.delay = std::chrono::milliseconds(delay);
  if (split_option->count() > 0) {
    options.faults.split_pause = std::chrono::milliseconds(split);
  }
  if (drop_option->count() > 0) {
    options.faults.drop_after = drop_after;
  }
  return options;
}

}  // namespace virtual_printer
