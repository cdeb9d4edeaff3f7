#include "session/printer_info.h"

#include "config/sdk_config.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr ConfigText kUnknownModelName = MakeConfigText("DEMO");
constexpr uint32_t kModelNumberShift = 16;

uint32_t ModelCode(const ModelRecord& model) {
  return static_cast<uint32_t>(model.values[0]) | static_cast<uint32_t>(model.number) << kModelNumberShift;
}

}  // namespace

// All known models share these capabilities; adjust them per model here.
int32_t BuildCapabilities(int32_t model_number, const SdkConfig& config, std::optional<Capabilities>* capabilities) {
  if (config.FindModel(model_number) == nullptr) {
    return VEXO_ERROR_UNKNOWN_MODEL;
  }
  *capabilities = Capabilities();
  return VEXO_OK;
}

int32_t InitPrinterInfo(PrinterInfo* info, int32_t model_number, const SdkConfig& config) {
  *info = PrinterInfo();
  info->model_number = model_number;
  const ModelRecord* const model = config.FindModel(model_number);
  if (model == nullptr) {
    info->model_name = kUnknownModelName;
    return VEXO_OK;
  }
  info->model_name = model->texts[ModelRecord::kNameText];
  info->model_code = ModelCode(*model);
  return BuildCapabilities(model_number, config, &info->capabilities);
}

int32_t InitPrinterInfo(PrinterInfo* info, int32_t model_number) {
  const SdkConfigReference config = LoadedSdkConfig();
  return InitPrinterInfo(info, model_number, config != nullptr ? *config : SdkConfig());
}

}  // namespace vexo
