#include <string>

#include "vexoctl/commands/commands.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/text.h"
#include "vexoctl/support/printer.h"

namespace vexoctl {
namespace {

std::string KindName(int32_t kind) {
  switch (kind) {
    case VEXO_PORT_SERIAL:
      return "serial";
    case VEXO_PORT_PARALLEL:
      return "parallel";
    case VEXO_PORT_USB:
      return "usb";
    case VEXO_PORT_NET:
      return "net";
    case VEXO_PORT_FILE:
      return "file";
    case VEXO_PORT_BLUETOOTH:
      return "bluetooth";
    case VEXO_PORT_BUFFER:
      return "buffer";
  }
  return "unknown";
}

Result DescribeUri(const std::string& text, int32_t kind) {
  const vexo::DeviceUri uri = vexo::SplitDeviceUri(text);
  Result result;
  result.text = "uri: " + text + "\nkind: " + std::to_string(kind) + " " + KindName(kind) + "\ntype: " + uri.type +
                "\ndevice: " + uri.device + "\n";
  auto parameters = nlohmann::ordered_json::array();
  for (const auto& [key, value] : uri.parameters) {
    result.text += "parameter: " + key + "=" + value + "\n";
    parameters.push_back({{"key", key}, {"value", value}});
  }
  result.json = {{"uri", text},      {"kind", kind},         {"kindName", KindName(kind)},
                 {"type", uri.type}, {"device", uri.device}, {"parameters", parameters}};
  return result;
}

Result DescribePortWithoutUri(int32_t kind) {
  return {"uri: none (a port in memory has no address)\nkind: " + std::to_string(kind) + " " + KindName(kind) + "\n",
          {{"uri", nullptr}, {"kind", kind}, {"kindName", KindName(kind)}}};
}

void PrintUri(const std::string& descriptor, const Options& options) {
  const vexo::Printer printer = MakePrinter(descriptor);
  const std::string uri = Utf8FromAnsi(printer.uri());
  PrintResult(uri.empty() ? DescribePortWithoutUri(printer.kind()) : DescribeUri(uri, printer.kind()), options);
}

}  // namespace

void AddUriCommand(CLI::App& tool, const Options& options) {
  CLI::App* const command = tool.add_subcommand("uri", "Show how the library reads a port descriptor");
  CLI::Option* const descriptor =
      command->add_option("DESCRIPTOR")->required()->description("Port descriptor or device URI");
  command->footer(
      "No printer is contacted. Parameters are shown one a line, in the order of the URI.\n"
      "Examples:\n"
      "  vexoctl uri NET,192.168.1.100\n"
      "  vexoctl uri COM3,9600\n"
      "  vexoctl uri USB,VID_0X1A2B,PID_0X0001\n"
      "  vexoctl --json uri \"vexo:/dev/bus/NET/DEVICE?ip=192.168.1.100+port=9100\"");
  command->callback([descriptor, &options] { PrintUri(descriptor->as<std::string>(), options); });
}

}  // namespace vexoctl
