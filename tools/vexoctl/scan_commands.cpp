#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "vexo/extend.h"
#include "vexoctl/commands.h"
#include "vexoctl/console_text.h"
#include "vexoctl/network_scan.h"
#include "vexoctl/network_targets.h"
#include "vexoctl/report.h"
#include "vexoctl/whole_number.h"

namespace vexoctl {
namespace {

constexpr uint32_t kDefaultTime = 2000;
constexpr uint32_t kLongestTime = 3600000;
constexpr char kGap[] = "  ";

struct ScanOptions {
  CLI::Option* target;
  CLI::Option* time;
};

using Row = std::vector<std::string>;

// In characters, not bytes.
size_t WidthOf(const std::string& utf8) {
  return static_cast<size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char unit) { return (static_cast<uint8_t>(unit) & 0xC0) != 0x80; }));
}

// As many columns as the longest row has; those without any text are left out.
std::string TableOf(const std::vector<Row>& rows) {
  std::vector<size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], WidthOf(row[column]));
    }
  }
  std::string table;
  for (const Row& row : rows) {
    std::string line;
    for (size_t column = 0; column < row.size(); ++column) {
      if (widths[column] > 0) {
        line += (line.empty() ? "" : kGap) + row[column] + std::string(widths[column] - WidthOf(row[column]), ' ');
      }
    }
    line.erase(line.find_last_not_of(' ') + 1);
    table += line + "\n";
  }
  return table;
}

Result DescribePrinters(const std::vector<vexo::NetworkPrinter>& printers) {
  Result result;
  result.json = {{"printers", nlohmann::ordered_json::array()}};
  std::vector<Row> rows;
  for (const vexo::NetworkPrinter& printer : printers) {
    rows.push_back({printer.descriptor()});
    rows.back().insert(rows.back().end(), printer.fields.begin() + 1, printer.fields.end());
    result.json["printers"].push_back({{"descriptor", printer.descriptor()}, {"fields", printer.fields}});
  }
  result.text = printers.empty() ? "no printers answered\n" : TableOf(rows);
  return result;
}

std::string TargetError(const std::string& text) {
  return IsIpv4Address(text) ? "" : "'" + Utf8FromAnsi(text) + "' is not an IPv4 address";
}

void Scan(vexo::NetworkScan scan, const ScanOptions& options, const Settings& settings) {
  const std::vector<std::string> targets =
      options.target->count() > 0 ? std::vector<std::string>{options.target->as<std::string>()} : BroadcastAddresses();
  const std::chrono::milliseconds time(options.time->count() > 0 ? options.time->as<uint32_t>() : kDefaultTime);
  PrintResult(DescribePrinters(ScanNetworks(scan, targets, time)), settings);
}

void AddScan(CLI::App* family, const std::string& name, const std::string& description, vexo::NetworkScan scan,
             const Settings& settings) {
  CLI::App* const command = family->add_subcommand(name, description);
  ScanOptions options{};
  options.target = command->add_option("--target")->type_name("ADDRESS");
  options.target->description("Where to ask: a broadcast address, or that of one printer; default: each network here")
      ->check(CLI::Validator(TargetError, /*validator_desc=*/""));
  options.time = command->add_option("--time")->type_name("MS");
  options.time->description("How long to wait for answers; default: " + std::to_string(kDefaultTime))
      ->transform(WholeNumber(1, kLongestTime));
  command->footer(
      "Printers that say they are ready are shown, one a line: what to give as -p, and what the\n"
      "printer tells of itself. It takes so long for each network, and then a moment for each\n"
      "printer.\n"
      "Examples:\n"
      "  vexoctl scan " +
      name + "\n  vexoctl scan " + name + " --target 192.168.1.255 --time 5000\n  vexoctl --json scan " + name);
  command->callback([scan, options, &settings] { Scan(scan, options, settings); });
}

}  // namespace

void AddScanCommands(CLI::App& tool, const Settings& settings) {
  CLI::App* const scan = tool.add_subcommand("scan", "Find printers on the network");
  scan->require_subcommand(1);
  scan->footer(
      "Examples:\n"
      "  vexoctl scan pos\n"
      "  vexoctl scan label --target 192.168.1.255");
  AddScan(scan, "pos", "Find receipt printers", ScanPos, settings);
  AddScan(scan, "label", "Find label printers", ScanLabel, settings);
}

}  // namespace vexoctl
