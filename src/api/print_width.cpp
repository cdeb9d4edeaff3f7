#include "protocol/print_width.h"

#include "vexo/extend.h"

int32_t SetPrintWidth(VexoPrinterHandle* handle, uint32_t width) { return vexo::ChangePrintWidth(handle, width); }

int32_t GetPrintWidth(VexoPrinterHandle* handle, uint32_t* width) { return vexo::QueryPrintWidth(handle, width); }
