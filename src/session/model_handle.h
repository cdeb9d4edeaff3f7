// Printer handles that the library makes for itself: with the information about the printer's model attached.
#ifndef VEXO_SESSION_MODEL_HANDLE_H_
#define VEXO_SESSION_MODEL_HANDLE_H_

#include <cstdint>
#include <memory>

#include "config/config_tables.h"
#include "session/printer_info.h"
#include "vexo/printer.h"

namespace vexo {

// A port that is put into it belongs to it and is given back with it.
struct ModelHandle : VexoPrinterHandle {
  ModelHandle();
  ModelHandle(const ModelHandle&) = delete;
  ModelHandle& operator=(const ModelHandle&) = delete;
  ~ModelHandle();

  PrinterInfo info;
};

// A handle without a port for a model of these tables. Null: see ModelHandleError.
std::unique_ptr<ModelHandle> MakeModelHandle(int32_t model_number, const SdkConfig& config);

// Why a handle was last not made, on any thread: -9 without memory, else the code of InitPrinterInfo; 0 at first.
int32_t ModelHandleError();

}  // namespace vexo

#endif  // VEXO_SESSION_MODEL_HANDLE_H_
