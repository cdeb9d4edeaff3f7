#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "vexo/extend.h"
#include "vexoctl/commands.h"
#include "vexoctl/download.h"
#include "vexoctl/download_file.h"
#include "vexoctl/failure.h"
#include "vexoctl/firmware_image.h"
#include "vexoctl/printer_session.h"
#include "vexoctl/report.h"
#include "vexoctl/whole_number.h"

namespace vexoctl {
namespace {

constexpr uint32_t kFilePacketSize = 2048;
constexpr uint32_t kDefaultFontPacketSize = 2048;
constexpr uint32_t kLargestFontPacketSize = 65535;
constexpr uint32_t kYModemBlockSize = 1024;

// The USB printer with the serial number of the current port, to the library.
constexpr char kSameUsbPrinter[] = "USB";

// Of the options that the kinds of downloads have in common.
struct Common {
  const CLI::Option* verbose;
  const Settings& settings;
};

using LibraryCall = std::function<int32_t(VexoPrinterHandle* handle, DownloadProgressCallback progress)>;

void Perform(const std::string& kind, const DownloadFile& file, DownloadPieces pieces, const Common& common,
             const LibraryCall& call) {
  PrinterSession session(common.settings.descriptor);
  session.Open(common.settings.time_limit);
  {
    Download download(file.name(), pieces, common.verbose->count() > 0, common.settings);
    download.Run([&](DownloadProgressCallback progress) { return call(session.handle(), progress); });
  }
  PrintResult({kind + " downloaded, " + std::to_string(file.size()) + " bytes; the printer restarts\n",
               {{"downloaded", kind}, {"bytes", file.size()}}},
              common.settings);
}

DownloadPieces Packages(const DownloadFile& file, uint32_t packet_size) {
  return {DownloadPieces::Kind::kPackages, (file.size() + packet_size - 1) / packet_size};
}

DownloadPieces Segments(const DownloadFile& file) {
  const std::vector<uint8_t> content = file.Read();
  const FirmwareImage image = ExamineFirmwareImage(content.data(), content.size());
  if (image.fault) {
    throw Failure(file.name() + " is not a firmware image: the segment at offset " +
                      std::to_string(image.fault->offset) + " " + image.fault->reason,
                  ERROR_INVALID_DATA);
  }
  return {DownloadPieces::Kind::kSegments, image.segments};
}

// Descriptor of the printer once it has left its usual mode. A wrong one is to be told before the printer leaves it.
struct Loader {
  Loader(const CLI::Option* option, const Settings& settings)
      : given(option->count() > 0),
        descriptor(given ? option->as<std::string>() : settings.descriptor),
        is_usb(PrinterSession(descriptor).kind() == VEXO_PORT_USB) {}

  bool given;
  std::string descriptor;
  bool is_usb;
};

CLI::App* AddDownload(CLI::App& download, const std::string& name, const std::string& description) {
  CLI::App* const command = download.add_subcommand(name, description);
  command->add_option("FILE")->required()->description("The file");
  return command;
}

std::string FileArgument(const CLI::App* command) { return command->get_option("FILE")->as<std::string>(); }

void AddFile(CLI::App& download, const Common& common) {
  CLI::App* const command = AddDownload(download, "file", "Download a file, in packages that the printer confirms");
  command->footer(
      "Each package carries 2048 bytes and is sent up to four times.\n"
      "Example:\n"
      "  vexoctl -p NET,192.168.1.100 download file logo.bin");
  command->callback([command, common] {
    const DownloadFile file(FileArgument(command));
    Perform("file", file, Packages(file, kFilePacketSize), common,
            [&file](VexoPrinterHandle* handle, DownloadProgressCallback progress) {
              return downloadFile(handle, file.ansi_name(), nullptr, progress);
            });
  });
}

void AddFont(CLI::App& download, const Common& common) {
  CLI::App* const command = AddDownload(download, "font", "Download a font, in packages that the printer confirms");
  CLI::Option* const size = command->add_option("--packet-size")->type_name("N");
  size->description("Bytes in a package, 1 to " + std::to_string(kLargestFontPacketSize) +
                    "; default: " + std::to_string(kDefaultFontPacketSize));
  size->transform(WholeNumber(1, kLargestFontPacketSize));
  command->footer(
      "Each package is sent up to four times.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 download font roman.fnt\n"
      "  vexoctl -p USB download font roman.fnt --packet-size 1024");
  command->callback([command, size, common] {
    const DownloadFile file(FileArgument(command));
    const uint32_t packet_size = size->count() > 0 ? size->as<uint32_t>() : kDefaultFontPacketSize;
    Perform("font", file, Packages(file, packet_size), common,
            [&file, packet_size](VexoPrinterHandle* handle, DownloadProgressCallback progress) {
              return DownloadFontFile(handle, static_cast<int32_t>(packet_size), file.ansi_name(), nullptr, progress);
            });
  });
}

void AddFirmware(CLI::App& download, const Common& common) {
  CLI::App* const command = AddDownload(download, "firmware", "Download a firmware image");
  CLI::Option* const loader_option = command->add_option("--loader")->type_name("DESCRIPTOR");
  loader_option->description("The printer in its update mode; default: as --port, except for USB");
  command->footer(
      "The image is checked first: its segments must make up the file. The printer goes into\n"
      "its update mode, is connected to anew for each segment, and restarts at the end. On USB\n"
      "it comes back as another device, which --loader must name. --timeout holds for the first\n"
      "connection only.\n"
      "It is a success only if the printer has taken every segment and was told to restart; one\n"
      "that has not may have to be switched off and on to leave its update mode.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 download firmware printer.img\n"
      "  vexoctl -p USB download firmware printer.img --loader USB,VID_0X1A2B,PID_0X0002");
  command->callback([command, loader_option, common] {
    const DownloadFile file(FileArgument(command));
    const DownloadPieces segments = Segments(file);
    const Loader loader(loader_option, common.settings);
    if (loader.is_usb && !loader.given) {
      throw CLI::RequiredError("--loader");
    }
    Perform("firmware", file, segments, common,
            [&file, &loader](VexoPrinterHandle* handle, DownloadProgressCallback progress) {
              return DownloadFMWImg(handle, file.ansi_name(), loader.descriptor.c_str(), progress);
            });
  });
}

// Of a whole number of blocks, one more is sent.
DownloadPieces YModemBlocks(const DownloadFile& file) {
  return {DownloadPieces::Kind::kPackages, file.size() / kYModemBlockSize + 1};
}

// Opened USB printers have theirs in the URI.
bool HasSerialNumber(const VexoPrinterHandle* handle) {
  char uri[256] = {};
  uint32_t length = 0;
  handle->port->GetUri(handle->port, uri, sizeof uri, &length);
  const std::string text = uri;
  const size_t at = text.find_first_of("?+");
  const size_t serial = at == std::string::npos ? at : text.find("sn=", at);
  return serial != std::string::npos && serial + 3 < text.size() && text[serial + 3] != '+';
}

// Without a serial number the library would take any USB printer for the loader of this one.
void RequireSerialNumber(const VexoPrinterHandle* handle, const Settings& settings) {
  if (!HasSerialNumber(handle)) {
    throw Failure("cannot tell " + settings.PrinterName() + " from other USB printers, name its loader with --loader",
                  VEXO_ERROR_USB_NOT_FOUND);
  }
}

void AddYModem(CLI::App& download, const Common& common) {
  CLI::App* const command = AddDownload(download, "ymodem", "Download a file to the printer's loader, by YModem");
  CLI::Option* const loader_option = command->add_option("--loader")->type_name("DESCRIPTOR");
  loader_option->description("The printer in its loader; default: as --port");
  CLI::Option* const in_loader = command->add_flag("--in-loader")->excludes(loader_option);
  in_loader->description("The printer is in its loader already, at --port");
  command->footer(
      "The printer is switched into its loader, unless it is there already, and restarts at the\n"
      "end. As a loader, USB is the USB printer with the serial number of the one at --port, and\n"
      "the default for a USB printer. --timeout holds for the first connection only. The printer is\n"
      "told FILE as typed here, of a long one the beginning.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 download ymodem printer.bin\n"
      "  vexoctl -p COM3,115200 download ymodem printer.bin --in-loader\n"
      "  vexoctl -p USB,USB001 download ymodem printer.bin --loader USB");
  command->callback([command, loader_option, in_loader, common] {
    const DownloadFile file(FileArgument(command));
    std::optional<std::string> loader;
    if (in_loader->count() == 0) {
      const Loader choice(loader_option, common.settings);
      loader = choice.is_usb && !choice.given ? kSameUsbPrinter : choice.descriptor;
    }
    Perform("ymodem", file, YModemBlocks(file), common,
            [&file, &loader, &common](VexoPrinterHandle* handle, DownloadProgressCallback progress) {
              if (loader == kSameUsbPrinter) {
                RequireSerialNumber(handle, common.settings);
              }
              return downloadYModem(handle, file.ansi_name(), loader ? loader->c_str() : nullptr, progress);
            });
  });
}

}  // namespace

void AddDownloadCommands(CLI::App& tool, const Settings& settings) {
  CLI::App* const download = tool.add_subcommand("download", "Download a file, a font or firmware into the printer");
  download->require_subcommand(1);
  download->needs(tool.get_option(kPortOption));
  CLI::Option* const verbose = download->add_flag("--verbose")->description("Show each step of the library");
  download->footer(
      "How far it is goes to the standard error stream: a bar on a console, else a line for each\n"
      "percent. Ctrl-C cancels at the next package, a second one ends vexoctl at once. A printer\n"
      "that was stopped halfway may have to be switched off and on.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 download file logo.bin\n"
      "  vexoctl -p NET,192.168.1.100 download firmware printer.img --verbose");
  const Common common = {verbose, settings};
  AddFile(*download, common);
  AddFont(*download, common);
  AddFirmware(*download, common);
  AddYModem(*download, common);
}

}  // namespace vexoctl
