#include <windows.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "vexoctl/commands/commands.h"
#include "vexoctl/console/failure.h"
#include "vexoctl/console/report.h"
#include "vexoctl/console/values.h"
#include "vexoctl/support/download_run.h"
#include "vexoctl/support/firmware_image.h"
#include "vexoctl/support/input_file.h"
#include "vexoctl/support/printer.h"

namespace vexoctl {
namespace {

constexpr uint32_t kFilePacketSize = 2048;
constexpr uint32_t kDefaultFontPacketSize = 2048;
constexpr uint32_t kYModemBlockSize = 1024;

// For downloadYModem: the USB printer with the serial number of the current port.
constexpr char kSameUsbPrinter[] = "USB";

// What all kinds of downloads need.
struct CommonOptions {
  const CLI::Option* verbose;
  const Options& options;
};

using DownloadCall =
    std::function<void(vexo::Printer& printer, const vexo::ProgressListener& progress, std::error_code* error)>;

void RunDownload(const std::string& kind, const DownloadFile& file, DownloadPieces pieces, const CommonOptions& common,
                 const DownloadCall& call) {
  vexo::Printer printer = OpenPrinter(common.options);
  {
    DownloadRun download(file.name(), pieces, common.verbose->count() > 0, common.options);
    download.Run(
        [&](const vexo::ProgressListener& progress, std::error_code* error) { call(printer, progress, error); });
  }
  PrintResult({kind + " downloaded, " + std::to_string(file.size()) + " bytes; the printer restarts\n",
               {{"downloaded", kind}, {"bytes", file.size()}}},
              common.options);
}

DownloadPieces Packages(const DownloadFile& file, uint32_t packet_size) {
  return {DownloadPieces::Kind::kPackages, (file.size() + packet_size - 1) / packet_size};
}

// A file that fills its blocks exactly is followed by one more.
DownloadPieces YModemBlocks(const DownloadFile& file) {
  return {DownloadPieces::Kind::kPackages, file.size() / kYModemBlockSize + 1};
}

DownloadPieces Segments(const DownloadFile& file) {
  const FirmwareImage image = ExamineFirmwareImage(file.Read());
  if (image.fault) {
    throw Failure(file.name() + " is not a firmware image: the segment at offset " +
                      std::to_string(image.fault->offset) + " " + image.fault->reason,
                  ERROR_INVALID_DATA);
  }
  return {DownloadPieces::Kind::kSegments, image.segments};
}

// Where the printer answers in its update mode or loader. A wrong descriptor is reported before the printer is sent
// there.
struct Loader {
  Loader(const CLI::Option* option, const Options& options)
      : is_given(option->count() > 0),
        descriptor(is_given ? option->as<std::string>() : options.descriptor),
        is_usb(MakePrinter(descriptor).kind() == VEXO_PORT_USB) {}

  bool is_given;
  std::string descriptor;
  bool is_usb;
};

CLI::App* AddDownload(CLI::App& download, const std::string& name, const std::string& description) {
  CLI::App* const command = download.add_subcommand(name, description);
  command->add_option("FILE")->required()->description("File to download");
  return command;
}

CLI::Option* AddLoaderOption(CLI::App* command, const std::string& description) {
  return command->add_option("--loader")->type_name("DESCRIPTOR")->description(description);
}

std::string FileArgument(const CLI::App* command) { return command->get_option("FILE")->as<std::string>(); }

void AddFileDownload(CLI::App& download, const CommonOptions& common) {
  CLI::App* const command = AddDownload(download, "file", "Download a file, in packages that the printer confirms");
  command->footer(
      "Each package carries 2048 bytes and is sent up to four times.\n"
      "Example:\n"
      "  vexoctl -p NET,192.168.1.100 download file logo.bin");
  command->callback([command, common] {
    const DownloadFile file(FileArgument(command));
    RunDownload("file", file, Packages(file, kFilePacketSize), common,
                [&file](vexo::Printer& printer, const vexo::ProgressListener& progress, std::error_code* error) {
                  printer.DownloadFile(file.ansi_name(), progress, error);
                });
  });
}

void AddFontDownload(CLI::App& download, const CommonOptions& common) {
  CLI::App* const command = AddDownload(download, "font", "Download a font, in packages that the printer confirms");
  CLI::Option* const size = command->add_option("--packet-size")->type_name("N");
  size->description("Bytes in a package, 1 to " + std::to_string(VEXO_FONT_PACKET_MAX) +
                    "; default: " + std::to_string(kDefaultFontPacketSize));
  size->transform(WholeNumber(1, VEXO_FONT_PACKET_MAX));
  command->footer(
      "Each package is sent up to four times.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 download font roman.fnt\n"
      "  vexoctl -p USB download font roman.fnt --packet-size 1024");
  command->callback([command, size, common] {
    const DownloadFile file(FileArgument(command));
    const uint32_t packet_size = size->count() > 0 ? size->as<uint32_t>() : kDefaultFontPacketSize;
    RunDownload("font", file, Packages(file, packet_size), common,
                [&](vexo::Printer& printer, const vexo::ProgressListener& progress, std::error_code* error) {
                  printer.DownloadFont(file.ansi_name(), static_cast<int32_t>(packet_size), progress, error);
                });
  });
}

void DownloadFirmware(const std::string& name, const CLI::Option* loader_option, const CommonOptions& common) {
  const DownloadFile file(name);
  const DownloadPieces segments = Segments(file);
  const Loader loader(loader_option, common.options);
  if (loader.is_usb && !loader.is_given) {
    throw CLI::RequiredError("--loader");
  }
  RunDownload("firmware", file, segments, common,
              [&](vexo::Printer& printer, const vexo::ProgressListener& progress, std::error_code* error) {
                printer.DownloadFirmware(file.ansi_name(), loader.descriptor, progress, error);
              });
}

void AddFirmwareDownload(CLI::App& download, const CommonOptions& common) {
  CLI::App* const command = AddDownload(download, "firmware", "Download a firmware image");
  CLI::Option* const loader =
      AddLoaderOption(command, "The printer in its update mode; default: as --port, except for USB");
  command->footer(
      "The image is checked first: its segments must make up the file. The printer enters its\n"
      "update mode, is connected to again for each segment, and restarts at the end. On USB it\n"
      "comes back as another device, which --loader must name. --timeout applies to the first\n"
      "connection only.\n"
      "It is a success only if the printer has taken every segment and was told to restart.\n"
      "Otherwise the printer may have to be switched off and on to leave its update mode.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 download firmware printer.img\n"
      "  vexoctl -p USB download firmware printer.img --loader USB,VID_0X1A2B,PID_0X0002");
  command->callback([command, loader, common] { DownloadFirmware(FileArgument(command), loader, common); });
}

// Without a serial number the library would take any USB printer for the loader of this one.
void RequireSerialNumber(const vexo::Printer& printer, const Options& options) {
  if (vexo::SplitDeviceUri(printer.uri()).Find("sn").empty()) {
    throw Failure("cannot tell " + options.PrinterName() + " from other USB printers, name its loader with --loader",
                  VEXO_ERROR_USB_NOT_FOUND);
  }
}

// @param loader_option null: the printer is in its loader already.
void DownloadYModem(const std::string& name, const CLI::Option* loader_option, const CommonOptions& common) {
  const DownloadFile file(name);
  std::optional<std::string> loader;
  if (loader_option != nullptr) {
    const Loader choice(loader_option, common.options);
    loader = choice.is_usb && !choice.is_given ? kSameUsbPrinter : choice.descriptor;
  }
  RunDownload("ymodem", file, YModemBlocks(file), common,
              [&](vexo::Printer& printer, const vexo::ProgressListener& progress, std::error_code* error) {
                if (loader == kSameUsbPrinter) {
                  RequireSerialNumber(printer, common.options);
                }
                printer.DownloadYModem(file.ansi_name(), loader ? loader->c_str() : nullptr, progress, error);
              });
}

void AddYModemDownload(CLI::App& download, const CommonOptions& common) {
  CLI::App* const command = AddDownload(download, "ymodem", "Download a file to the printer's loader, by YModem");
  CLI::Option* const loader = AddLoaderOption(command, "The printer in its loader; default: as --port");
  CLI::Option* const in_loader = command->add_flag("--in-loader")->excludes(loader);
  in_loader->description("The printer is in its loader already, at --port");
  command->footer(
      "The printer is switched into its loader, unless it is there already, and restarts at the\n"
      "end. The loader \"USB\" is the USB printer with the serial number of the one at --port; it is\n"
      "the default for a USB printer. --timeout applies to the first connection only. The printer\n"
      "is told the FILE as typed here; a long name is cut.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 download ymodem printer.bin\n"
      "  vexoctl -p COM3,115200 download ymodem printer.bin --in-loader\n"
      "  vexoctl -p USB,USB001 download ymodem printer.bin --loader USB");
  command->callback([command, loader, in_loader, common] {
    DownloadYModem(FileArgument(command), in_loader->count() == 0 ? loader : nullptr, common);
  });
}

}  // namespace

void AddDownloadCommand(CLI::App& tool, const Options& options) {
  CLI::App* const download = tool.add_subcommand("download", "Download a file, a font or firmware into the printer");
  download->require_subcommand(1);
  download->needs(tool.get_option(kPortOption));
  CLI::Option* const verbose = download->add_flag("--verbose")->description("Show each step of the library");
  download->footer(
      "The progress goes to the standard error output: a bar on a console, else a line for each\n"
      "percent. Ctrl-C cancels at the next package, a second one ends vexoctl at once. A printer\n"
      "that was stopped halfway may have to be switched off and on.\n"
      "Examples:\n"
      "  vexoctl -p NET,192.168.1.100 download file logo.bin\n"
      "  vexoctl -p NET,192.168.1.100 download firmware printer.img --verbose");
  const CommonOptions common = {verbose, options};
  AddFileDownload(*download, common);
  AddFontDownload(*download, common);
  AddFirmwareDownload(*download, common);
  AddYModemDownload(*download, common);
}

}  // namespace vexoctl
