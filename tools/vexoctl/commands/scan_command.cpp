#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "vexo/extend.h"
#include "vexoctl/commands/commands.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/text.h"
#include "vexoctl/console/values.h"
#include "vexoctl/support/network_scan.h"

namespace vexoctl {
namespace {

constexpr uint32_t kDefaultScanMs = 2000;
constexpr uint32_t kLongestScanMs = 3600000;

// The options of one kind of scan.
struct ScanOptions {
  CLI::Option* target;
  CLI::Option* time;
};

using Row = std::vector<std::string>;

// In characters.
size_t WidthOf(const std::string& utf8) {
  const auto begins_character = [](char byte) { return (static_cast<uint8_t>(byte) & 0xC0) != 0x80; };
  return static_cast<size_t>(std::count_if(utf8.begin(), utf8.end(), begins_character));
}

// The width of each column of the longest row.
std::vector<size_t> ColumnWidths(const std::vector<Row>& rows) {
  std::vector<size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], WidthOf(row[column]));
    }
  }
  return widths;
}

// The rows in columns; those without any text are left out.
std::string Table(const std::vector<Row>& rows) {
  constexpr char kGap[] = "  ";
  const std::vector<size_t> widths = ColumnWidths(rows);
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

Result DescribeNetworkPrinters(const std::vector<vexo::NetworkPrinter>& printers) {
  Result result;
  result.json = {{"printers", nlohmann::ordered_json::array()}};
  std::vector<Row> rows;
  for (const vexo::NetworkPrinter& printer : printers) {
    rows.push_back({printer.descriptor()});
    rows.back().insert(rows.back().end(), printer.fields.begin() + 1, printer.fields.end());
    result.json["printers"].push_back({{"descriptor", printer.descriptor()}, {"fields", printer.fields}});
  }
  result.text = printers.empty() ? "no printers answered\n" : Table(rows);
  return result;
}

std::string TargetError(const std::string& text) {
  return IsIpv4Address(text) ? "" : "'" + Utf8FromAnsi(text) + "' is not an IPv4 address";
}

void ScanAndShow(vexo::NetworkScan scan, const ScanOptions& scan_options, const Options& options) {
  const std::vector<std::string> targets = scan_options.target->count() > 0
                                               ? std::vector<std::string>{scan_options.target->as<std::string>()}
                                               : BroadcastAddresses();
  const uint32_t time = scan_options.time->count() > 0 ? scan_options.time->as<uint32_t>() : kDefaultScanMs;
  PrintResult(DescribeNetworkPrinters(ScanNetworks(scan, targets, std::chrono::milliseconds(time))), options);
}

void AddScan(CLI::App* parent, const std::string& name, const std::string& description, vexo::NetworkScan scan,
             const Options& options) {
  CLI::App* const command = parent->add_subcommand(name, description);
  ScanOptions scan_options{};
  scan_options.target = command->add_option("--target")->type_name("ADDRESS");
  scan_options.target
      ->description("Address to ask: a broadcast address, or that of a printer; default: each network of this machine")
      ->check(CLI::Validator(TargetError, /*validator_desc=*/""));
  scan_options.time = command->add_option("--time")->type_name("MS");
  scan_options.time->description("How long to wait for answers; default: " + std::to_string(kDefaultScanMs))
      ->transform(WholeNumber(1, kLongestScanMs));
  command->footer(
      "Shows the printers that answer that they are ready, one a line: the descriptor for -p, and\n"
      "the fields of the answer. Takes the time for each network, and then a moment for each\n"
      "printer.\n"
      "Examples:\n"
      "  vexoctl scan " +
      name + "\n  vexoctl scan " + name + " --target 192.168.1.255 --time 5000\n  vexoctl --json scan " + name);
  command->callback([scan, scan_options, &options] { ScanAndShow(scan, scan_options, options); });
}

}  // namespace

void AddScanCommand(CLI::App& tool, const Options& options) {
  CLI::App* const scan = tool.add_subcommand("scan", "Find printers on the network");
  scan->require_subcommand(1);
  scan->footer(
      "Examples:\n"
      "  vexoctl scan pos\n"
      "  vexoctl scan label --target 192.168.1.255");
  AddScan(scan, "pos", "Find receipt printers", ScanPos, options);
  AddScan(scan, "label", "Find label printers", ScanLabel, options);
}

}  // namespace vexoctl
