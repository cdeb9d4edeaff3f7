/*
 * Downloads a font into a printer: download PORT FILE
 *
 *   download NET,192.168.1.100 roman.fnt
 *
 * The library writes a trace to the standard output; the progress goes to the standard error output.
 */
#include <signal.h>
#include <stdio.h>

#include "vexo/extend.h"

enum { kPacketSize = 2048 };

/* Called on this thread, while DownloadFontFile runs. */
static void show_progress(int32_t percentage) { fprintf(stderr, "\r%3d %%", (int)percentage); }

/* Ctrl-C: the download ends at its next package, with VEXO_ERROR_DOWNLOAD_CANCELLED. */
static void cancel(int number) {
  (void)number;
  setCancel();
}

static const char* message(int32_t result) {
  switch (result) {
    case VEXO_ERROR_PARAMETER:
      return "the file cannot be opened";
    case VEXO_ERROR_IO_OPEN_FAILED:
      return "the printer cannot be connected to";
    case VEXO_ERROR_DOWNLOAD_CANCELLED:
      return "cancelled";
    case VEXO_ERROR_DOWNLOAD_MODE:
      return "the printer did not enter its download mode";
    case VEXO_ERROR_DOWNLOAD_EMPTY:
      return "the file is empty";
    case VEXO_ERROR_DOWNLOAD_BAD_ANSWER:
      return "the printer did not confirm a package";
    default:
      return "the download failed";
  }
}

int main(int argc, char** argv) {
  VexoPrinterHandle printer = {VEXO_PRINTER_MAGIC, NULL, NULL, 0};
  int32_t result;

  if (argc != 3) {
    fprintf(stderr, "usage: download PORT FILE\n");
    return 2;
  }
  result = ScannerGunPortOpen(&printer, argv[1]); /* creates the port; also opens a serial line */
  if (printer.port != NULL && printer.port->kind != VEXO_PORT_SERIAL) {
    result = printer.port->Open(printer.port);
    printer.portOpen = result == VEXO_OK;
  }
  if (result == VEXO_OK) {
    signal(SIGINT, cancel);
    result = DownloadFontFile(&printer, kPacketSize, argv[2], NULL, show_progress);
    fprintf(stderr, "\n");
  }
  DiskPortOpen(&printer, ""); /* releases the port; always VEXO_ERROR_IO_SETTING */
  if (result != VEXO_OK) {
    fprintf(stderr, "%s: %s (%d)\n", argv[2], message(result), (int)result);
    return 1;
  }
  fprintf(stderr, "%s downloaded; the printer restarts\n", argv[2]);
  return 0;
}
