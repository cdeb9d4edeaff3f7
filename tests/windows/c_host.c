#include "windows/c_host.h"

#include <vexo/extend.h>

int32_t AskPrintWidth(const char* descriptor, uint32_t* width) {
  const VexoPortTimeouts patient = {20000, 0, 20000, 0, 20000, 20000};
  VexoPrinterHandle handle = {VEXO_PRINTER_MAGIC, 0, 0, 0};
  int32_t result = ScannerGunPortOpen(&handle, descriptor);
  if (result == VEXO_OK) {
    result = handle.port->SetTimeouts(handle.port, patient);
  }
  if (result == VEXO_OK) {
    result = handle.port->Open(handle.port);
  }
  if (result == VEXO_OK) {
    result = GetPrintWidth(&handle, width);
  }
  ScannerGunPortOpen(&handle, "");
  return result;
}
