// What a printer's model determines.
#ifndef VEXO_SESSION_PRINTER_INFO_H_
#define VEXO_SESSION_PRINTER_INFO_H_

#include <array>
#include <cstdint>
#include <optional>

#include "config/config_tables.h"

namespace vexo {

// The capabilities of a model. The texts are lists that hosts display.
struct Capabilities {
  const char* barcode_types = "UPC-A,UPC-E,EAN8,EAN13,CODE39,ITF,CODEBAR,CODE128,CODE93,QRCODE";
  const char* code_pages =  // For font A and font B.
      "A,12,24,242,311,318,437,720,850,860,863,865,866,852,858;"
      "B,9,17,242,311,318,437,850,860,863,865,866,852,858,1252;";
  int32_t horizontal_unit = 1;
  int32_t vertical_unit = 1;
  int32_t dots_per_millimetre = 8;
  int32_t dots_per_inch = 203;
  const char* width_and_code_page = nullptr;  // Such as "576,936"; null if nothing special.
};

struct PrinterInfo {
  int32_t model_number = 0;
  ConfigText model_name = {};
  uint32_t model_code = 0;  // The model number in the high half, the flags of its record in the low half.
  std::array<uint8_t, 256> work_buffer = {};
  uint32_t work_buffer_size = 256;
  std::optional<Capabilities> capabilities;  // Not set for an unknown model.
};

// Returns VEXO_ERROR_UNKNOWN_MODEL when the model is not in `config`.
int32_t BuildCapabilities(int32_t model_number, const SdkConfig& config, std::optional<Capabilities>* capabilities);

// Fills `info` for a model of the loaded configuration. Returns VEXO_OK or the code of BuildCapabilities.
//
// Compatibility: a model that is not in the configuration is named "DEMO", which is not a failure.
int32_t InitPrinterInfo(PrinterInfo* info, int32_t model_number);

// As above, with tables held by the caller.
int32_t InitPrinterInfo(PrinterInfo* info, int32_t model_number, const SdkConfig& config);

}  // namespace vexo

#endif  // VEXO_SESSION_PRINTER_INFO_H_
