#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vexoctl/commands.h"
#include "vexoctl/console_text.h"
#include "vexoctl/printer_session.h"
#include "vexoctl/report.h"

namespace vexoctl {
namespace {

// The parts of a canonical device URI, "vexo:/dev/bus/TYPE/DEVICE?key=value+key=value".
struct DeviceUri {
  std::string type;
  std::string device;
  std::vector<std::pair<std::string, std::string>> parameters;
};

// Cuts the text off its front up to the separator, which is dropped; all of it when there is none.
std::string_view TakeUntil(char separator, std::string_view& text) {
  const std::string_view taken = text.substr(0, text.find(separator));
  text.remove_prefix(std::min(taken.size() + 1, text.size()));
  return taken;
}

DeviceUri SplitUri(std::string_view rest) {
  constexpr std::string_view kScheme = "vexo:/dev/bus/";
  rest.remove_prefix(std::min(kScheme.size(), rest.size()));
  DeviceUri uri;
  uri.type = TakeUntil('/', rest);
  uri.device = TakeUntil('?', rest);
  while (!rest.empty()) {
    std::string_view value = TakeUntil('+', rest);
    const std::string_view key = TakeUntil('=', value);
    uri.parameters.emplace_back(key, value);
  }
  return uri;
}

std::string KindWord(uint32_t kind) {
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

Result DescribeUri(const std::string& uri_text, uint32_t kind) {
  const DeviceUri uri = SplitUri(uri_text);
  Result result;
  result.text = "uri: " + uri_text + "\nkind: " + std::to_string(kind) + " " + KindWord(kind) + "\ntype: " + uri.type +
                "\ndevice: " + uri.device + "\n";
  auto parameters = nlohmann::ordered_json::array();
  for (const auto& [key, value] : uri.parameters) {
    result.text += "parameter: " + key + "=" + value + "\n";
    parameters.push_back({{"key", key}, {"value", value}});
  }
  result.json = {{"uri", uri_text},  {"kind", kind},         {"kindName", KindWord(kind)},
                 {"type", uri.type}, {"device", uri.device}, {"parameters", parameters}};
  return result;
}

Result DescribeWithoutUri(uint32_t kind) {
  return {"uri: none (a port in memory has no address)\nkind: " + std::to_string(kind) + " " + KindWord(kind) + "\n",
          {{"uri", nullptr}, {"kind", kind}, {"kindName", KindWord(kind)}}};
}

void PrintUri(const std::string& descriptor, const Settings& settings) {
  const PrinterSession session(descriptor);
  const std::string uri = Utf8FromAnsi(session.GetUri());
  PrintResult(uri.empty() ? DescribeWithoutUri(session.kind()) : DescribeUri(uri, session.kind()), settings);
}

}  // namespace

void AddUriCommand(CLI::App& tool, const Settings& settings) {
  CLI::App* const command = tool.add_subcommand("uri", "Show how the library reads a port descriptor");
  CLI::Option* const descriptor =
      command->add_option("DESCRIPTOR")->required()->description("Port descriptor or device URI");
  command->footer(
      "No printer is contacted. Each parameter has a line of its own, in the order of the URI.\n"
      "Examples:\n"
      "  vexoctl uri NET,192.168.1.100\n"
      "  vexoctl uri COM3,9600\n"
      "  vexoctl uri USB,VID_0X1A2B,PID_0X0001\n"
      "  vexoctl --json uri \"vexo:/dev/bus/NET/DEVICE?ip=192.168.1.100+port=9100\"");
  command->callback([descriptor, &settings] { PrintUri(descriptor->as<std::string>(), settings); });
}

}  // namespace vexoctl
