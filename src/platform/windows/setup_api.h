// The device list functions of setupapi.dll, which is loaded on first use: it pulls in the user interface libraries and
// would more than double this library's load time.
#ifndef VEXO_PLATFORM_WINDOWS_SETUP_API_H_
#define VEXO_PLATFORM_WINDOWS_SETUP_API_H_

#include <windows.h>
// After windows.h, which they do not include.
#include <cfgmgr32.h>
#include <devpropdef.h>
#include <setupapi.h>

namespace vexo::platform {

struct SetupApi {
  decltype(&SetupDiGetClassDevsA) GetClassDevs;
  decltype(&SetupDiDestroyDeviceInfoList) DestroyDeviceInfoList;
  decltype(&SetupDiEnumDeviceInterfaces) EnumDeviceInterfaces;
  decltype(&SetupDiGetDeviceInterfaceDetailA) GetDeviceInterfaceDetail;
  decltype(&SetupDiGetDeviceRegistryPropertyA) GetDeviceRegistryProperty;
  decltype(&SetupDiGetDevicePropertyW) GetDeviceProperty;
  decltype(&CM_Get_Parent) GetParent;
  decltype(&CM_Get_Child) GetChild;
  decltype(&CM_Get_Device_IDA) GetDeviceId;
  decltype(&CM_Get_DevNode_Registry_PropertyA) GetDevNodeRegistryProperty;
};

// Returns null when a function is missing; GetLastError gives the reason.
const SetupApi* LoadSetupApi();

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_SETUP_API_H_
