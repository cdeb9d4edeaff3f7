// The system's list of devices: functions of setupapi.dll, which is loaded when they are first needed. It brings the
// whole user interface along and would more than double the time that hosts wait for this library to load.
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

// Null when the system does not have them all; GetLastError says why.
const SetupApi* LoadSetupApi();

}  // namespace vexo::platform

#endif  // VEXO_PLATFORM_WINDOWS_SETUP_API_H_
