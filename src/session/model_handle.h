// Printer handles that the library makes itself, with information about the printer's model.
#ifndef VEXO_SESSION_MODEL_HANDLE_H_
#define VEXO_SESSION_MODEL_HANDLE_H_

#include <cstdint>
#include <memory>

#include "config/config_tables.h"
#include "session/printer_info.h"
#include "vexo/printer.h"

namespace vexo {

// Owns the port object that is put into it.
struct ModelHandle : VexoPrinterHandle {
  ModelHandle();
  ModelHandle(const ModelHandle&) = delete;
  ModelHandle& operator=(const ModelHandle&) = delete;
  ~ModelHandle();

  PrinterInfo info;
};

// Returns a handle without a port for a model of `config`, or null; see ModelHandleError.
std::unique_ptr<ModelHandle> MakeModelHandle(int32_t model_number, const SdkConfig& config);

// Why MakeModelHandle last failed, on any thread: VEXO_ERROR_OUT_OF_MEMORY or the code of InitPrinterInfo; VEXO_OK at
// first.
int32_t ModelHandleError();

}  // namespace vexo

#endif  // VEXO_SESSION_MODEL_HANDLE_H_
