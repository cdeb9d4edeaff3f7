// What the maker has put into the library about configuration files and models.
#ifndef VEXO_PROTOCOL_SDK_CONFIG_DATA_H_
#define VEXO_PROTOCOL_SDK_CONFIG_DATA_H_

#include <array>
#include <cstdint>

#include "protocol/sdk_config_tables.h"

namespace vexo {

// The alphabet that configuration files are stored in: the plain byte of each stored one.
extern const std::array<uint8_t, 256> kConfigPlainBytes;

// Known without any file, and found before the models of a file.
extern const std::array<ModelRecord, 2> kBuiltInModels;

}  // namespace vexo

#endif  // VEXO_PROTOCOL_SDK_CONFIG_DATA_H_
