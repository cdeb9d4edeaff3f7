#include "protocol/sdk_config_tables.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "protocol/sdk_config_text.h"

namespace vexo {
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

TEST(SdkConfigTables, TakeWhatTheTextHolds) {
  const std::string longest(64, 'x');
  const std::pair<std::string, std::string> rows[] = {
      {"[settings]\r\nbaud=9600\r\n\r\n[models]\r\n7,r,T7,,blue,1,2,3,4,0.5\r\n",
       "baud=9600;7:r/T7//blue:1/2/3/4:0.50;"},
      {"[a]\r[b]\r7,,T7\r[c]\r8,,T8\r", "7:/T7//:0/0/0/0:0.00;"},  // No settings; the third section is not read.
      {"x[\n]=1\ny=[2]\nz=3", "]=1;0:///:0/0/0/0:0.00;"},          // Any "[" opens a section.
      // Words and values of settings.
      {"[\n  key  more =  value more\nk=a=b\n=v\nk=\nnothing\n \t\n=", "key=value;k=a=b;=v;k=;=;"},
      {"[\n" + longest + "=" + longest + "\n" + longest + "y=1\nk=" + longest + "y",
       longest + "=" + longest + ";=1;k=;"},
      // Fields of models.
      {"[\n[\n1,a,b,c,d,5,6,7,8,9.25,more,fields", "1:a/b/c/d:5/6/7/8:9.25;"},
      {"[\n[\n1," + longest + "," + longest + "y,,z", "1:" + longest + "///z:0/0/0/0:0.00;"},
      // Numbers that fit and numbers that do not.
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

TEST(SdkConfigTables, AreBounded) {
  const struct {
    size_t settings, models;  // In the text.
    size_t kept_settings, kept_models;
  } rows[] = {{129, 513, 128, 512}, {300, 469, 128, 468}};
  for (const auto& row : rows) {
    const SdkConfig config =
        Parse("[a]\n" + Repeat(row.settings, "\r\nk=v\n\n") + "[b]\r" + Repeat(row.models, "1,,T\n"));
    EXPECT_EQ(row.kept_settings, config.settings.size());
    EXPECT_EQ(row.kept_models, config.models.size());
  }
}

TEST(SdkConfigText, IsStoredInAnotherAlphabet) {
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

}  // namespace
}  // namespace vexo
