/*
 * Reads the print width of a printer, or changes it: print_width PORT [DOTS]
 *
 *   print_width NET,192.168.1.100
 *   print_width COM3,115200 576
 */
#include <stdio.h>
#include <stdlib.h>

#include "vexo/extend.h"

/* Creates the port for a descriptor and connects it. */
static int32_t open_printer(VexoPrinterHandle* printer, const char* descriptor) {
  int32_t result = ScannerGunPortOpen(printer, descriptor);
  VexoPort* const port = printer->port;
  /* A serial line is open now; other ports are only created. */
  if (port != NULL && port->kind != VEXO_PORT_SERIAL) {
    result = port->Open(port);
    printer->portOpen = result == VEXO_OK;
  }
  return result;
}

static void close_printer(VexoPrinterHandle* printer) {
  DiskPortOpen(printer, ""); /* Releases the port; always VEXO_ERROR_IO_SETTING. */
}

int main(int argc, char** argv) {
  VexoPrinterHandle printer = {VEXO_PRINTER_MAGIC, NULL, NULL, 0};
  uint32_t width = 0;
  int32_t result;

  if (argc < 2 || argc > 3) {
    fprintf(stderr, "usage: print_width PORT [DOTS]\n");
    return 2;
  }
  result = open_printer(&printer, argv[1]);
  if (result == VEXO_OK && argc == 3) {
    result = SetPrintWidth(&printer, (uint32_t)strtoul(argv[2], NULL, 10));
  }
  if (result == VEXO_OK) {
    result = GetPrintWidth(&printer, &width);
  }
  close_printer(&printer);
  if (result != VEXO_OK) {
    fprintf(stderr, "%s: error %d\n", argv[1], (int)result); /* see error.h */
    return 1;
  }
  printf("%u dots\n", (unsigned)width);
  return 0;
}
