// The configuration of the process, and what it tells about a printer.
#include "protocol/sdk_config.h"

#include "core/core_test.h"
#include "protocol/printer_info.h"
#include "protocol/sdk_config_text.h"
#include "support/own_folder.h"
#include "support/threads.h"

namespace vexo::test {
namespace {

std::string Stored(std::string text) {
  EncodeConfigText(&text);
  return text;
}

class SdkConfigFile : public ::testing::Test {
 protected:
  void TearDown() override {
    ReleaseSdkConfig();
    EXPECT_EQ(nullptr, LoadedSdkConfig());
    RemoveOwnFile();
  }
};

TEST_F(SdkConfigFile, AddsToTheBuiltInModels) {
  SetOwnFile(Stored("[s]\nk=v\n[m]\n500,a,KM500,,,3\n451,b,KM451B\n502,c,KM452\n"));
  EXPECT_EQ(0, LoadSdkConfig());
  EXPECT_EQ("sdkconfig", LastOwnFileName());
  const SdkConfigReference config = LoadedSdkConfig();
  ASSERT_EQ(1U, config->settings.size());
  EXPECT_EQ("v", ViewText(config->settings[0].value));
  EXPECT_EQ(5U, config->models.size());
  EXPECT_EQ("KM500", FindModel(500)->name());
  // The built-in models come first.
  EXPECT_EQ("KM451", FindModel(451)->name());
  EXPECT_EQ(451, FindModelByName("KM451")->number);
  EXPECT_EQ(452, FindModelByName("KM452")->number);
  EXPECT_FALSE(FindModel(501) || FindModelByName("km500"));
}

TEST_F(SdkConfigFile, MissingOrUnreadableLeavesTheBuiltInModels) {
  for (const auto prepare : {RemoveOwnFile, SetUnreadableOwnFile}) {
    prepare();
    EXPECT_EQ(0, LoadSdkConfig());
    EXPECT_EQ(2U, LoadedSdkConfig()->models.size());
    ReleaseSdkConfig();
  }
}

TEST_F(SdkConfigFile, IsReadOnceAndAgainOnceItWasReleased) {
  SetOwnFile(Stored("[\n[\n500,,OLD"));
  EXPECT_FALSE(FindModel(451)) << "before anything is loaded";
  ReleaseSdkConfig();
  EXPECT_EQ(0, LoadSdkConfig());
  EXPECT_EQ(0, LoadSdkConfig());  // No further use.
  EXPECT_EQ(1, OwnFileRequests());
  const SdkConfigReference held = LoadedSdkConfig();
  const ModelRecord* const record = held->FindModel(500);

  ReleaseSdkConfig();
  EXPECT_FALSE(FindModel(500) || FindModelByName("KM451"));
  ReleaseSdkConfig();  // Nothing is left to release.
  SetOwnFile(Stored("[\n[\n500,,NEW"));
  EXPECT_EQ(0, LoadSdkConfig());
  EXPECT_EQ("NEW", FindModel(500)->name());
  EXPECT_EQ("OLD", record->name());
}

// Whoever loads and releases, a record that was found and tables that are held stay whole.
TEST_F(SdkConfigFile, ThreadsLoadAndReleaseAsTheyLike) {
  SetOwnFile(Stored("[\n[\n500,abc,KM500,def,ghi,1,2,3,4,5\n"));
  RunOnThreads(4, [](int /*thread*/) {
    for (int round = 0; round < 200; ++round) {
      SdkConfigReference config;
      EXPECT_EQ(0, LoadSdkConfig(&config));
      const std::optional<ModelRecord> found = FindModelByName("KM500");
      ReleaseSdkConfig();
      EXPECT_EQ(4, config->FindModel(500)->values[3]);
      EXPECT_TRUE(!found || ViewText(found->texts[3]) == "ghi");
    }
  });
}

TEST_F(SdkConfigFile, TellsAboutAModel) {
  SetOwnFile(Stored("[\n[\n500,,KM500,,,66051\n-1,," + std::string(64, 'n') + ",,,-2147483648\n70000,,BIG"));
  ASSERT_EQ(0, LoadSdkConfig());
  const std::tuple<int32_t, std::string, uint32_t, bool> rows[] = {{500, "KM500", 500U << 16 | 0x10203, true},
                                                                   {-1, std::string(64, 'n'), 0xFFFF0000, true},
                                                                   {70000, "BIG", 70000U << 16, true},
                                                                   {499, "DEMO", 0, false}};
  for (const auto& [number, name, code, known] : rows) {
    PrinterInfo info;
    info.work_buffer.fill(1);
    EXPECT_EQ(0, InitPrinterInfo(&info, number));
    EXPECT_EQ(number, info.model_number);
    EXPECT_EQ(name, ViewText(info.model_name));
    EXPECT_EQ(code, info.model_code) << number;
    EXPECT_EQ(256, std::count(info.work_buffer.begin(), info.work_buffer.end(), 0));
    EXPECT_EQ(256U, info.work_buffer_size);
    EXPECT_EQ(known, info.capabilities.has_value());
    std::optional<Capabilities> capabilities;
    EXPECT_EQ(known ? 0 : -8, BuildCapabilities(number, *LoadedSdkConfig(), &capabilities));
  }
  ReleaseSdkConfig();
  PrinterInfo info;
  EXPECT_EQ(0, InitPrinterInfo(&info, 451));
  EXPECT_EQ("DEMO", ViewText(info.model_name)) << "nothing is loaded any more";
}

}  // namespace
}  // namespace vexo::test
