// The DLL as hosts load it: its exports, its version, and leaks after unloading.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "vexo/extend.h"
#include "windows/process_resources.h"

namespace vexo::test {
namespace {

HMODULE Library() { return LoadLibraryA("vexoextend.dll"); }

std::string LibraryPath() {
  char path[MAX_PATH] = {};
  EXPECT_NE(GetModuleFileNameA(Library(), path, MAX_PATH), 0U);
  return path;
}

template <typename T>
const T* AtOffset(HMODULE library, DWORD offset) {
  return reinterpret_cast<const T*>(reinterpret_cast<const char*>(library) + offset);
}

// The names, each followed by a space.
std::string ExportedNames(HMODULE library) {
  const auto* const dos = AtOffset<IMAGE_DOS_HEADER>(library, 0);
  const auto* const header = AtOffset<IMAGE_NT_HEADERS>(library, static_cast<DWORD>(dos->e_lfanew));
  const DWORD offset = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
  const auto* const directory = AtOffset<IMAGE_EXPORT_DIRECTORY>(library, offset);
  const auto* const names = AtOffset<DWORD>(library, directory->AddressOfNames);
  std::string result;
  for (DWORD i = 0; i < directory->NumberOfNames; ++i) {
    result += AtOffset<char>(library, names[i]) + std::string(1, ' ');
  }
  return result;
}

TEST(ModuleTest, ExportsWhatHostsImport) {
  EXPECT_EQ(ExportedNames(Library()),
            "AddReprintMonitorFun AddUSBMonitor CloseReprintMonitorWork DestroyReprintMonitorObj DiskPortOpen "
            "DownloadFMWImg DownloadFontFile GetDeviceStatus GetExtendVersion GetLastErrorCode GetPrintWidth "
            "GetPrinterTaskOverInfo GetReprintMonitorObj GetStatusReport GetUsbDescList OpenReprintMonitorWork "
            "QueryReprintMonitorWork RegisterPrinter RemoveReprintMonitorFun RemoveUSBMonitor ResetPrinterInteriorId "
            "ScanLabel ScanPos ScanSnmp ScannerGunPortOpen ScannerPortOpen SelectSDKRepintType SetClearPrintTask "
            "SetDelayTime SetPaperFeed SetPollingTime SetPrintTaskId SetPrintWidth SetReadTimeOut "
            "StartUSBMonitorThread StopUSBMonitorThread downloadFile downloadYModem setCancel ");
}

TEST(ModuleTest, CarriesItsVersion) {
  const std::string path = LibraryPath();
  std::vector<char> resource(GetFileVersionInfoSizeA(path.c_str(), nullptr));
  ASSERT_NE(GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()), 0);
  VS_FIXEDFILEINFO* version = nullptr;
  UINT size = 0;
  ASSERT_NE(VerQueryValueA(resource.data(), "\\", reinterpret_cast<void**>(&version), &size), 0);
  EXPECT_EQ(version->dwFileVersionMS, 0x0001'0000U);
  EXPECT_EQ(version->dwFileVersionLS, 0x0002'0002U);
}

// Free thread-local slots. A process has about a thousand.
size_t CountFreeSlots() {
  std::vector<DWORD> slots;
  for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) {
    slots.push_back(slot);
  }
  for (const DWORD slot : slots) {
    TlsFree(slot);
  }
  return slots.size();
}

template <typename Export>
Export* Find(HMODULE library, const char* name) {
  return reinterpret_cast<Export*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

// The round determines which functions are used. Monitors are slow, so only few rounds make one.
void LoadAndUnload(const std::string& file, size_t round) {
  const HMODULE library = LoadLibraryA(file.c_str());
  ASSERT_NE(library, nullptr);
  if (round % 2 == 0) {
    auto* const open = Find<decltype(ScannerGunPortOpen)>(library, "ScannerGunPortOpen");
    VexoPrinterHandle handle = {VEXO_PRINTER_MAGIC, nullptr, nullptr, 0};
    EXPECT_EQ(open(&handle, "NET,127.0.0.1"), VEXO_OK);
    EXPECT_EQ(open(&handle, "BUF"), VEXO_OK);
    EXPECT_EQ(handle.port->Open(handle.port), VEXO_OK);
    EXPECT_EQ(open(&handle, ""), VEXO_ERROR_IO_SETTING);
  }
  if (round % 100 == 0) {
    CVEXOPrinterReadHelper* const monitor = Find<decltype(GetReprintMonitorObj)>(library, "GetReprintMonitorObj")();
    EXPECT_EQ(Find<decltype(SetPollingTime)>(library, "SetPollingTime")(monitor, 1), VEXO_OK);
    EXPECT_EQ(Find<decltype(DestroyReprintMonitorObj)>(library, "DestroyReprintMonitorObj")(monitor), VEXO_OK);
  }
  ASSERT_NE(FreeLibrary(library), 0);
  ASSERT_EQ(GetModuleHandleA(file.c_str()), nullptr) << "still loaded";
}

// The test program never unloads its own DLL, so this test loads a copy.
TEST(ModuleTest, ThousandLoadsLeakNothing) {
  constexpr size_t kRounds = 1000;
  constexpr size_t kLeakLimit = 1024;  // Per round: the compiler's thread library leaks about 500 bytes.
  const std::string copy = "vexoextend_copy_" + std::to_string(GetCurrentProcessId()) + ".dll";
  ASSERT_NE(CopyFileA(LibraryPath().c_str(), copy.c_str(), FALSE), 0);
  for (size_t round = 0; round <= 100; ++round) {
    LoadAndUnload(copy, round);
  }
  const size_t handles = CountHandles();
  const size_t threads = CountThreads();
  const size_t slots = CountFreeSlots();
  const size_t bytes = CountHeapBytes();
  for (size_t round = 0; round < kRounds; ++round) {
    LoadAndUnload(copy, round);
  }
  EXPECT_EQ(CountHandles(), handles);
  EXPECT_EQ(CountThreads(), threads);
  EXPECT_EQ(CountFreeSlots(), slots);
  EXPECT_LT(CountHeapBytes(), bytes + kRounds * kLeakLimit);
  EXPECT_NE(DeleteFileA(copy.c_str()), 0);
}

}  // namespace
}  // namespace vexo::test
