// The printer models that need no configuration file.
#ifndef VEXO_CONFIG_BUILT_IN_MODELS_H_
#define VEXO_CONFIG_BUILT_IN_MODELS_H_

#include <array>

#include "config/config_tables.h"

namespace vexo {

// Searched before the models of a file.
extern const std::array<ModelRecord, 2> kBuiltInModels;

}  // namespace vexo

#endif  // VEXO_CONFIG_BUILT_IN_MODELS_H_
