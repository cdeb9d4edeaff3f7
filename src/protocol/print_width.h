// The print width: key 0x00CC of the printer's parameter zone, 16 bits.
#ifndef VEXO_PROTOCOL_PRINT_WIDTH_H_
#define VEXO_PROTOCOL_PRINT_WIDTH_H_

#include <cstdint>

#include "vexo/printer.h"

namespace vexo {

// Implement SetPrintWidth and GetPrintWidth (extend.h).
int32_t ChangePrintWidth(VexoPrinterHandle* handle, uint32_t width);
int32_t QueryPrintWidth(VexoPrinterHandle* handle, uint32_t* width);

}  // namespace vexo

#endif  // VEXO_PROTOCOL_PRINT_WIDTH_H_
