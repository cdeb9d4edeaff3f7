/* Checks at compile time that the public headers are C99 and that the records have the layout hosts rely on. */
#include <stddef.h>

#include "vexo/error.h"
#include "vexo/extend.h"
#include "vexo/printer.h"

#define AT(record, field, offset) \
  typedef char record##_##field##_at_##offset[offsetof(record, field) == (offset) ? 1 : -1]
#define SIZE(record, bytes) typedef char record##_has_##bytes##_bytes[sizeof(record) == (bytes) ? 1 : -1]

AT(VexoPrinterHandle, magic, 0);
AT(VexoPrinterHandle, host, 8);
AT(VexoPrinterHandle, port, 16);
AT(VexoPrinterHandle, portOpen, 24);
SIZE(VexoPrinterHandle, 32);

AT(VexoPort, magic, 0);
AT(VexoPort, driver, 8);
AT(VexoPort, Configure, 16);
AT(VexoPort, GetUri, 24);
AT(VexoPort, Open, 32);
AT(VexoPort, Close, 40);
AT(VexoPort, Abort, 48);
AT(VexoPort, CheckOpen, 56);
AT(VexoPort, SetTimeouts, 64);
AT(VexoPort, GetTimeouts, 72);
AT(VexoPort, Write, 80);
AT(VexoPort, Read, 88);
AT(VexoPort, ReadAvailable, 96);
AT(VexoPort, Control, 104);
AT(VexoPort, kind, 112);
SIZE(VexoPort, 120);

AT(VexoPortTimeouts, readInterval, 0);
AT(VexoPortTimeouts, readMultiplier, 4);
AT(VexoPortTimeouts, readConstant, 8);
AT(VexoPortTimeouts, writeMultiplier, 12);
AT(VexoPortTimeouts, writeConstant, 16);
AT(VexoPortTimeouts, connect, 20);
SIZE(VexoPortTimeouts, 24);
