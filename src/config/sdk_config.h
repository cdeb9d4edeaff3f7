// The configuration of this process: the built-in models and what the file "sdkconfig" beside the library adds.
#ifndef VEXO_CONFIG_SDK_CONFIG_H_
#define VEXO_CONFIG_SDK_CONFIG_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "config/config_tables.h"

namespace vexo {

// The tables stay as they are for whoever holds them, also when others release them or load them again.
using SdkConfigReference = std::shared_ptr<const SdkConfig>;

// Reads the file, unless the tables are loaded already: only the call that reads counts as a use of them. Without a
// file that can be read there are the built-in models alone. 0; -9: nothing is loaded.
int32_t LoadSdkConfig();

// The same, and gives the tables that are loaded at that moment: another thread may release them at the next.
int32_t LoadSdkConfig(SdkConfigReference* loaded);

// Drops one use. With the last one the tables are released, even if others count on them, and the next load reads the
// file again.
void ReleaseSdkConfig();

// The loaded tables, or null.
SdkConfigReference LoadedSdkConfig();

// The first loaded record with this number, or with exactly this name.
std::optional<ModelRecord> FindModel(int32_t number);
std::optional<ModelRecord> FindModelByName(std::string_view name);

}  // namespace vexo

#endif  // VEXO_CONFIG_SDK_CONFIG_H_
