// The configuration file: parsing, the tables and their use for printer information.
#include "config/sdk_config.h"

#include <array>
#include <set>

#include "config/config_lines.h"
#include "config/config_tables.h"
#include "config/stored_alphabet.h"
#include "core/core_test.h"
#include "session/printer_info.h"
#include "support/own_folder.h"
#include "support/threads.h"

namespace vexo::test {
namespace {

using namespace std::string_literals;

SdkConfig Parse(const std::string& text) {
  SdkConfig config;
  AppendConfigText(text, &config);
  return config;
}

// "key=value;" of each setting, then "number:text/text/text/text:value/value/value/value:factor;" of each model.
std::string Describe(const SdkConfig& config) {
  std::string words;
  for (const Setting& setting : config.settings) {
    words += std::string(ViewText(setting.key)) + "=" + std::string(ViewText(setting.value)) + ";";
  }
  for (const ModelRecord& model : config.models) {
    words += std::to_string(model.number);
    for (size_t i = 0; i < model.texts.size(); ++i) {
      words += (i == 0 ? ":" : "/") + std::string(ViewText(model.texts[i]));
    }
    for (size_t i = 0; i < model.values.size(); ++i) {
      words += (i == 0 ? ":" : "/") + std::to_string(model.values[i]);
    }
    words += ":" + std::to_string(model.factor).substr(0, 4) + ";";
  }
  return words;
}

TEST(SdkConfigTables, AreParsedFromText) {
  const std::string longest(64, 'x');
  const std::pair<std::string, std::string> rows[] = {
      {"[settings]\r\nbaud=9600\r\n\r\n[models]\r\n7,r,T7,,blue,1,2,3,4,0.5\r\n",
       "baud=9600;7:r/T7//blue:1/2/3/4:0.50;"},
      {"[a]\r[b]\r7,,T7\r[c]\r8,,T8\r", "7:/T7//:0/0/0/0:0.00;"},  // No settings; the third section is ignored.
      {"x[\n]=1\ny=[2]\nz=3", "]=1;0:///:0/0/0/0:0.00;"},          // Any "[" opens a section.
      // Settings.
      {"[\n  key  more =  value more\nk=a=b\n=v\nk=\nnothing\n \t\n=", "key=value;k=a=b;=v;k=;=;"},
      {"[\n" + longest + "=" + longest + "\n" + longest + "y=1\nk=" + longest + "y",
       longest + "=" + longest + ";=1;k=;"},
      // Models.
      {"[\n[\n1,a,b,c,d,5,6,7,8,9.25,more,fields", "1:a/b/c/d:5/6/7/8:9.25;"},
      {"[\n[\n1," + longest + "," + longest + "y,,z", "1:" + longest + "///z:0/0/0/0:0.00;"},
      // Numbers, also out of range.
      {"[\n[\n-2147483648,,,,,2147483647,+5,+-5,\t6 7,-1.5", "-2147483648:///:2147483647/5/0/6:-1.5;"},
      {"[\n[\n2147483648,,,,,-2147483649,99999999999999999999,+,-,1e39", "0:///:0/0/0/0:0.00;"},
      {"[\n[\n1,,,,,0x10,1e3,1.9,--1,1e-1", "1:///:0/1/1/0:0.10;"},
      // A zero byte ends its line.
      {"[\nk=v\0w\n\0k=v\na\0=1\n\0\0[\n[\n7,T\0,T7\n\0\0\0"s, "k=v;7:T///:0/0/0/0:0.00;"},
  };
  for (const auto& [text, tables] : rows) {
    EXPECT_EQ(tables, Describe(Parse(text))) << text;
  }
}

std::string Repeat(size_t times, const std::string& line) {
  std::string text;
  for (size_t i = 0; i < times; ++i) {
    text += line;
  }
  return text;
}

TEST(SdkConfigTables, HaveLimitedSizes) {
  const struct {
    size_t settings, models;  // Rows in the text.
    size_t kept_settings, kept_models;
  } rows[] = {{129, 513, 128, 512}, {300, 469, 128, 468}};
  for (const auto& row : rows) {
    const SdkConfig config =
        Parse("[a]\n" + Repeat(row.settings, "\r\nk=v\n\n") + "[b]\r" + Repeat(row.models, "1,,T\n"));
    EXPECT_EQ(row.kept_settings, config.settings.size());
    EXPECT_EQ(row.kept_models, config.models.size());
  }
}

TEST(SdkConfigText, NumbersLinesAsEditorsDo) {
  const std::string text = "a\r\n\n[s]\rk=v\n[m]\n\n1\n[u]\nx";
  ConfigLines lines(text);
  std::string rows;
  for (ConfigLine line; lines.Next(&line);) {
    rows += std::to_string(line.row) + std::string(line.text) + std::to_string(static_cast<int>(line.section)) +
            (line.opens_section ? "! " : " ");
  }
  EXPECT_EQ("1a0 3[s]1! 4k=v1 5[m]2! 712 8[u]3! 9x3 ", rows);
}

TEST(SdkConfigText, IsEncoded) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    all += static_cast<char>(byte);
  }
  std::string stored = all;
  EncodeConfigText(&stored);
  EXPECT_EQ(256U, std::set<char>(stored.begin(), stored.end()).size());
  for (size_t i = 0; i < all.size(); ++i) {
    EXPECT_NE(all[i], stored[i]);
  }
  DecodeConfigText(&stored);
  EXPECT_EQ(all, stored);
}

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
  // Built-in models have priority.
  EXPECT_EQ("KM451", FindModel(451)->name());
  EXPECT_EQ(451, FindModelByName("KM451")->number);
  EXPECT_EQ(452, FindModelByName("KM452")->number);
  EXPECT_FALSE(FindModel(501) || FindModelByName("km500"));
}

TEST_F(SdkConfigFile, MissingOrUnreadableFileGivesTheBuiltInModels) {
  for (const auto prepare : {RemoveOwnFile, SetUnreadableOwnFile}) {
    prepare();
    EXPECT_EQ(0, LoadSdkConfig());
    EXPECT_EQ(2U, LoadedSdkConfig()->models.size());
    ReleaseSdkConfig();
  }
}

TEST_F(SdkConfigFile, IsReadOnceAndAgainAfterRelease) {
  SetOwnFile(Stored("[\n[\n500,,OLD"));
  EXPECT_FALSE(FindModel(451)) << "nothing is loaded yet";
  ReleaseSdkConfig();
  EXPECT_EQ(0, LoadSdkConfig());
  EXPECT_EQ(0, LoadSdkConfig());  // Not counted as another user.
  EXPECT_EQ(1, OwnFileRequests());
  const SdkConfigReference held = LoadedSdkConfig();
  const ModelRecord* const record = held->FindModel(500);

  ReleaseSdkConfig();
  EXPECT_FALSE(FindModel(500) || FindModelByName("KM451"));
  ReleaseSdkConfig();  // Has no effect.
  SetOwnFile(Stored("[\n[\n500,,NEW"));
  EXPECT_EQ(0, LoadSdkConfig());
  EXPECT_EQ("NEW", FindModel(500)->name());
  EXPECT_EQ("OLD", record->name());
}

// Records and tables in use stay valid while other threads load and release.
TEST_F(SdkConfigFile, IsLoadedAndReleasedOnSeveralThreads) {
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

TEST_F(SdkConfigFile, ProvidesModelInformation) {
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
    if (known) {
      EXPECT_EQ((std::array{1, 1, 8, 203}),
                (std::array{capabilities->horizontal_unit, capabilities->vertical_unit,
                            capabilities->dots_per_millimetre, capabilities->dots_per_inch}));
      EXPECT_EQ("UPC-A,UPC-E,EAN8,EAN13,CODE39,ITF,CODEBAR,CODE128,CODE93,QRCODE"s, capabilities->barcode_types);
    }
  }
  ReleaseSdkConfig();
  PrinterInfo info;
  EXPECT_EQ(0, InitPrinterInfo(&info, 451));
  EXPECT_EQ("DEMO", ViewText(info.model_name)) << "valid after the tables were released";
}

}  // namespace
}  // namespace vexo::test
