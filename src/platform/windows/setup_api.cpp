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
         Find(library, "CM_Get_Device_IDA", &api->GetDeviceId) &&
         Find(library, "CM_Get_DevNode_Registry_PropertyA", &api->GetDevNodeRegistryProperty);
}

SetupApi g_api = {};

// setupapi.dll is never unloaded: this library must not unload another one while it is being unloaded itself.
BOOL CALLBACK Load(INIT_ONCE* /*once*/, void* error, void** /*context*/) {
  const HMODULE library = LoadLibraryExA("setupapi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  const bool complete = library != nullptr && FindAll(library, &g_api);
  *static_cast<DWORD*>(error) = complete ? ERROR_SUCCESS : GetLastError();
  return complete ? TRUE : FALSE;
}

}  // namespace

const SetupApi* LoadSetupApi() {
  static INIT_ONCE once = INIT_ONCE_STATIC_INIT;
  DWORD error = ERROR_SUCCESS;
  if (InitOnceExecuteOnce(&once, Load, &error, nullptr) == FALSE) {
    SetLastError(error);
    return nullptr;
  }
  return &g_api;
}

}  // namespace vexo::platform
