#include "config/sdk_config.h"

#include <array>
#include <cstdio>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "config/built_in_models.h"
#include "config/stored_alphabet.h"
#include "platform/mutex.h"
#include "platform/own_folder.h"
#include "vexo/error.h"

namespace vexo {
namespace {

constexpr char kFileName[] = "sdkconfig";
constexpr size_t kPieceSize = 4096;

platform::Mutex g_mutex;  // Guards g_tables and g_uses; held while the file is read, so it is read once.
SdkConfigReference g_tables;
uint32_t g_uses = 0;

// Returns an empty string when the file does not exist or cannot be read completely.
std::string ReadConfigFile() {
  const platform::OwnedFile file = platform::OpenOwnFile(kFileName);
  if (file == nullptr) {
    return {};
  }
  std::string content;
  std::array<char, kPieceSize> piece;
  size_t read = 0;
  while ((read = std::fread(piece.data(), 1, piece.size(), file.get())) > 0) {
    content.append(piece.data(), read);
  }
  return std::ferror(file.get()) == 0 ? content : std::string();
}

SdkConfigReference MakeTables() {
  auto tables = std::make_shared<SdkConfig>();
  tables->models.assign(kBuiltInModels.begin(), kBuiltInModels.end());
  std::string text = ReadConfigFile();
  DecodeConfigText(&text);
  AppendConfigText(text, tables.get());
  return tables;
}

std::optional<ModelRecord> CopyRecord(const ModelRecord* record) {
  return record != nullptr ? std::optional<ModelRecord>(*record) : std::nullopt;
}

}  // namespace

int32_t LoadSdkConfig() {
  SdkConfigReference loaded;
  return LoadSdkConfig(&loaded);
}

int32_t LoadSdkConfig(SdkConfigReference* loaded) {
  const std::lock_guard<platform::Mutex> guard(g_mutex);
  if (g_tables == nullptr) {
    try {
      g_tables = MakeTables();
    } catch (const std::bad_alloc&) {
      return VEXO_ERROR_OUT_OF_MEMORY;
    }
    ++g_uses;
  }
  *loaded = g_tables;
  return VEXO_OK;
}

void ReleaseSdkConfig() {
  SdkConfigReference released;  // Destroyed after the lock is released.
  const std::lock_guard<platform::Mutex> guard(g_mutex);
  if (g_uses > 0 && --g_uses == 0) {
    released = std::move(g_tables);
  }
}

SdkConfigReference LoadedSdkConfig() {
  const std::lock_guard<platform::Mutex> guard(g_mutex);
  return g_tables;
}

std::optional<ModelRecord> FindModel(int32_t number) {
  const SdkConfigReference tables = LoadedSdkConfig();
  return CopyRecord(tables != nullptr ? tables->FindModel(number) : nullptr);
}

std::optional<ModelRecord> FindModelByName(std::string_view name) {
  const SdkConfigReference tables = LoadedSdkConfig();
  return CopyRecord(tables != nullptr ? tables->FindModelByName(name) : nullptr);
}

}  // namespace vexo
