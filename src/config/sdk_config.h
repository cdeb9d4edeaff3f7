// The configuration of this process: the built-in models plus the file "sdkconfig" in the library's folder.
#ifndef VEXO_CONFIG_SDK_CONFIG_H_
#define VEXO_CONFIG_SDK_CONFIG_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "config/config_tables.h"

namespace vexo {

// The tables are immutable and stay valid for every holder, even after they are released or reloaded.
using SdkConfigReference = std::shared_ptr<const SdkConfig>;

// Loads the tables unless they are loaded. Without a readable file they hold the built-in models only. Returns
// VEXO_ERROR_OUT_OF_MEMORY, with nothing loaded, when memory runs out.
//
// Compatibility: only the call that actually loads counts as a use, so a session can release the tables that another
// one still expects to find.
int32_t LoadSdkConfig();

// As above, and returns the tables loaded at that moment: another thread may release them right after.
int32_t LoadSdkConfig(SdkConfigReference* loaded);

// Releases one use. The last one drops the tables, and the next load reads the file again.
void ReleaseSdkConfig();

// Returns the loaded tables, or null.
SdkConfigReference LoadedSdkConfig();

// Returns the first loaded record with this number, or with exactly this name.
std::optional<ModelRecord> FindModel(int32_t number);
std::optional<ModelRecord> FindModelByName(std::string_view name);

}  // namespace vexo

#endif  // VEXO_CONFIG_SDK_CONFIG_H_
