#include "session/model_handle.h"

#include <atomic>
#include <new>

#include "port/port_object.h"
#include "vexo/error.h"

namespace vexo {
namespace {

std::atomic<int32_t> g_last_error{VEXO_OK};

}  // namespace

ModelHandle::ModelHandle() : VexoPrinterHandle{VEXO_PRINTER_MAGIC, nullptr, nullptr, 0} {}

ModelHandle::~ModelHandle() {
  portOpen = 0;
  if (port != nullptr) {
    ClosePort(port);
  }
}

std::unique_ptr<ModelHandle> MakeModelHandle(int32_t model_number, const SdkConfig& config) {
  std::unique_ptr<ModelHandle> handle(new (std::nothrow) ModelHandle);
  const int32_t result =
      handle != nullptr ? InitPrinterInfo(&handle->info, model_number, config) : VEXO_ERROR_OUT_OF_MEMORY;
  if (result != VEXO_OK) {
    g_last_error = result;
    return nullptr;
  }
  return handle;
}

int32_t ModelHandleError() { return g_last_error; }

}  // namespace vexo
