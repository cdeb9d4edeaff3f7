#include "platform/windows/setup_api.h"

namespace vexo::platform {
namespace {

template <typename Function>
bool Find(HMODULE library, const char* name, Function* function) {
  *function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
  return *function != nullptr;
}

bool FindAll(HMODULE library, SetupApi* api) {
  return Find(library, "SetupDiGetClassDevsA", &api->GetClassDevs) &&
         Find(library, "SetupDiDestroyDeviceInfoList", &api->DestroyDeviceInfoList) &&
         Find(library, "SetupDiEnumDeviceInterfaces", &api->EnumDeviceInterfaces) &&
         Find(library, "SetupDiGetDeviceInterfaceDetailA", &api->GetDeviceInterfaceDetail) &&
         Find(library, "SetupDiGetDeviceRegistryPropertyA", &api->GetDeviceRegistryProperty) &&
         Find(library, "SetupDiGetDevicePropertyW", &api->GetDeviceProperty) &&
         Find(library, "CM_Get_Parent", &api->GetParent) && Find(library, "CM_Get_Child", &api->GetChild) &&
         Find(library, "CM_Get_Device_IDA", &api->GetDeviceId);
}

// Stays loaded: this library must not unload another one while it is being unloaded itself.
struct LoadedSetupApi {
  LoadedSetupApi() {
    const HMODULE library = LoadLibraryExA("setupapi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    complete = library != nullptr && FindAll(library, &api);
    error = complete ? ERROR_SUCCESS : GetLastError();
  }

  SetupApi api = {};
  bool complete = false;
  DWORD error = ERROR_SUCCESS;
};

}  // namespace

const SetupApi* LoadSetupApi() {
  static const LoadedSetupApi loaded;
  if (!loaded.complete) {
    SetLastError(loaded.error);
    return nullptr;
  }
  return &loaded.api;
}

}  // namespace vexo::platform
