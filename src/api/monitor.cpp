#include <memory>

#include "api/contain.h"
#include "monitor/last_error.h"
#include "monitor/printer_read_helper.h"
#include "monitor/report_decoder.h"
#include "monitor/task_over_info.h"
#include "vexo/extend.h"

namespace {

// The last-error rule: a failure is stored for GetLastErrorCode, a success leaves the stored value alone.
int32_t StoreFailure(int32_t result) {
  if (result != VEXO_OK) {
    vexo::StoreLastErrorCode(result);
  }
  return result;
}

int32_t BadArgument() { return StoreFailure(VEXO_ERROR_MONITOR_PARAMETER); }

// Calls a member function of the monitor under the last-error rule.
template <typename Function, typename... Arguments>
int32_t Run(CVEXOPrinterReadHelper* monitor, Function function, Arguments... arguments) {
  if (monitor == nullptr) {
    return BadArgument();
  }
  return StoreFailure(vexo::ContainAll([=] { return (monitor->*function)(arguments...); }));
}

int32_t SetTime(CVEXOPrinterReadHelper* monitor, void (CVEXOPrinterReadHelper::*set)(int64_t), int64_t milliseconds) {
  if (monitor == nullptr) {
    return BadArgument();
  }
  (monitor->*set)(milliseconds);
  return VEXO_OK;
}

}  // namespace

CVEXOPrinterReadHelper* GetReprintMonitorObj(void) {
  std::unique_ptr<CVEXOPrinterReadHelper> monitor;
  const int32_t made = vexo::ContainOutOfMemory([&] {
    monitor = std::make_unique<CVEXOPrinterReadHelper>();
    return monitor->StartReader() ? VEXO_OK : VEXO_ERROR_OUT_OF_MEMORY;
  });
  if (made != VEXO_OK) {
    StoreFailure(VEXO_ERROR_MONITOR_OUT_OF_MEMORY);
    return nullptr;
  }
  return monitor.release();
}

int32_t DestroyReprintMonitorObj(CVEXOPrinterReadHelper* monitor) {
  if (monitor == nullptr) {
    return BadArgument();
  }
  monitor->StopReader();
  delete monitor;
  return VEXO_OK;
}

int32_t RegisterPrinter(CVEXOPrinterReadHelper* monitor, VexoPrinterHandle* handle) {
  if (monitor == nullptr || handle == nullptr) {
    return BadArgument();
  }
  return StoreFailure(monitor->BindPrinter(handle));
}

int32_t SelectSDKRepintType(CVEXOPrinterReadHelper* monitor, uint32_t type) {
  if (monitor == nullptr || type > static_cast<uint32_t>(vexo::ProtocolFamily::kV1)) {
    return BadArgument();
  }
  monitor->SelectFamily(static_cast<vexo::ProtocolFamily>(type));
  return VEXO_OK;
}

int32_t SetDelayTime(CVEXOPrinterReadHelper* monitor, int64_t milliseconds) {
  return SetTime(monitor, &CVEXOPrinterReadHelper::SetDelayTime, milliseconds);
}

int32_t SetReadTimeOut(CVEXOPrinterReadHelper* monitor, int64_t milliseconds) {
  return SetTime(monitor, &CVEXOPrinterReadHelper::SetReadTimeout, milliseconds);
}

int32_t SetPollingTime(CVEXOPrinterReadHelper* monitor, int64_t milliseconds) {
  return SetTime(monitor, &CVEXOPrinterReadHelper::SetPollingTime, milliseconds);
}

int32_t OpenReprintMonitorWork(CVEXOPrinterReadHelper* monitor) {
  return Run(monitor, &CVEXOPrinterReadHelper::OpenWork);
}

int32_t CloseReprintMonitorWork(CVEXOPrinterReadHelper* monitor) {
  return Run(monitor, &CVEXOPrinterReadHelper::CloseWork);
}

int32_t QueryReprintMonitorWork(CVEXOPrinterReadHelper* monitor, char* buffer, int32_t bufferLength) {
  if (buffer == nullptr || bufferLength == 0) {
    return BadArgument();
  }
  return Run(monitor, &CVEXOPrinterReadHelper::QueryWork, buffer, bufferLength);
}

// Compatibility: an event that the selected family does not know returns VEXO_MONITOR_NO_EVENT without storing it; only
// an empty queue stores that code.
int32_t GetStatusReport(CVEXOPrinterReadHelper* monitor, uint16_t* status, uint32_t* value) {
  if (monitor == nullptr || status == nullptr) {
    return BadArgument();
  }
  const vexo::StatusReport report = monitor->TakeStatusReport();
  switch (report.outcome) {
    case vexo::StatusReport::Outcome::kNone:
      return StoreFailure(VEXO_MONITOR_NO_EVENT);
    case vexo::StatusReport::Outcome::kUnknown:
      return VEXO_MONITOR_NO_EVENT;
    case vexo::StatusReport::Outcome::kEvent:
      break;
  }
  *status = report.status;
  if (report.has_value && value != nullptr) {
    *value = report.value;
  }
  return report.task_id;
}

// Compatibility: neither VEXO_ERROR_MONITOR_NOT_OPEN nor a failed send is stored; hosts learn of both from the return
// value alone.
int32_t SetPrintTaskId(CVEXOPrinterReadHelper* monitor, int32_t taskId) {
  if (monitor == nullptr || taskId < VEXO_TASK_LOWEST || taskId > VEXO_TASK_HIGHEST) {
    return BadArgument();
  }
  if (!monitor->work_open()) {
    return VEXO_ERROR_MONITOR_NOT_OPEN;
  }
  return vexo::ContainAll([=] { return monitor->TagNextJob(taskId); });
}

// Compatibility: VEXO_ERROR_MONITOR_NOT_OPEN is not stored, here and in ResetPrinterInteriorId.
int32_t SetClearPrintTask(CVEXOPrinterReadHelper* monitor) {
  if (monitor != nullptr && !monitor->work_open()) {
    return VEXO_ERROR_MONITOR_NOT_OPEN;
  }
  return Run(monitor, &CVEXOPrinterReadHelper::ClearTasks);
}

int32_t GetDeviceStatus(CVEXOPrinterReadHelper* monitor, uint32_t* status) {
  if (status == nullptr) {
    return BadArgument();
  }
  return Run(monitor, &CVEXOPrinterReadHelper::QueryDeviceStatus, status);
}

int32_t SetPaperFeed(CVEXOPrinterReadHelper* monitor) { return Run(monitor, &CVEXOPrinterReadHelper::FeedPaper); }

int32_t ResetPrinterInteriorId(CVEXOPrinterReadHelper* monitor, uint32_t mode) {
  if (mode > VEXO_RESET_AWAIT_ANSWER) {
    return BadArgument();
  }
  if (monitor != nullptr && !monitor->work_open()) {
    return VEXO_ERROR_MONITOR_NOT_OPEN;
  }
  return Run(monitor, &CVEXOPrinterReadHelper::ResetTaskNumbers, mode == VEXO_RESET_AWAIT_ANSWER);
}

// Compatibility: works on the printer handle alone, stores nothing, and reports a null handle as VEXO_ERROR_HANDLE
// where the other functions return VEXO_ERROR_MONITOR_PARAMETER.
int32_t GetPrinterTaskOverInfo(VexoPrinterHandle* handle, int32_t timeMs, char* text, uint32_t textLength,
                               uint32_t* length) {
  if (handle == nullptr) {
    return VEXO_ERROR_HANDLE;
  }
  if (text == nullptr || length == nullptr) {
    return VEXO_ERROR_MONITOR_PARAMETER;
  }
  return vexo::ContainAll([=] { return vexo::ReadTaskOverInfo(handle, timeMs, text, textLength, length); });
}

int32_t AddReprintMonitorFun(CVEXOPrinterReadHelper* monitor, MonitorCallback callback, int64_t* id) {
  if (callback == nullptr || id == nullptr) {
    return BadArgument();
  }
  if (monitor == nullptr) {
    return BadArgument();
  }
  return StoreFailure(vexo::ContainAll([=] {
    *id = monitor->AddCallback(callback);
    return VEXO_OK;
  }));
}

int32_t RemoveReprintMonitorFun(CVEXOPrinterReadHelper* monitor, int64_t id) {
  if (monitor == nullptr) {
    return BadArgument();
  }
  monitor->RemoveCallback(id);
  return VEXO_OK;
}
