#include "messages/error_text.h"

#include <iconv.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>

#include "core/core_test.h"
#include "platform/language.h"

namespace vexo {
namespace {

struct Texts {
  std::string english;
  std::string chinese;
};

// Reads error_texts.tsv: the texts that hosts in the field rely on, in UTF-8, with line feeds written as "\n".
std::map<int32_t, Texts> KnownTexts() {
  std::map<int32_t, Texts> known;
  std::ifstream file(VEXO_ERROR_TEXTS);
  std::string code;
  Texts texts;
  while (std::getline(file, code, '\t') && std::getline(file, texts.english, '\t') &&
         std::getline(file, texts.chinese)) {
    for (std::string* text : {&texts.english, &texts.chinese}) {
      for (size_t at = text->find("\\n"); at != std::string::npos; at = text->find("\\n")) {
        text->replace(at, 2, "\n");
      }
    }
    known[std::stoi(code)] = texts;
  }
  return known;
}

std::string ToGbk(std::string utf8) {
  char gbk[kErrorTextBufferSize];
  char* in = utf8.data();
  char* out = gbk;
  size_t in_left = utf8.size();
  size_t out_left = sizeof(gbk);
  iconv_t conversion = iconv_open("GBK", "UTF-8");
  EXPECT_EQ(0U, iconv(conversion, &in, &in_left, &out, &out_left)) << utf8;
  iconv_close(conversion);
  return {gbk, static_cast<size_t>(out - gbk)};
}

std::string MessageOf(int32_t code, int32_t primary_language) {
  char buffer[kErrorTextBufferSize];
  std::memset(buffer, '#', sizeof(buffer));
  uint32_t length = 0;
  EXPECT_EQ(0, CopyErrorMessage(code, buffer, 0, primary_language, &length));
  EXPECT_LT(length, sizeof(buffer));
  EXPECT_EQ('\0', buffer[length]);
  return {buffer, length};
}

TEST(ErrorText, EveryCodeHasItsOwnOrTheGenericText) {
  const std::map<int32_t, Texts> known = KnownTexts();
  ASSERT_EQ(57U, known.size());
  const Texts general = {"Printer Unknown Error!", "未知错误!"};
  for (int32_t code = -1300; code <= 20; ++code) {
    const auto found = known.find(code);
    const Texts& texts = found != known.end() ? found->second : general;
    EXPECT_EQ(ToGbk(texts.english), MessageOf(code, platform::kLanguageEnglish)) << code;
    EXPECT_EQ(ToGbk(texts.chinese), MessageOf(code, platform::kLanguageChinese)) << code;
  }
  EXPECT_EQ(general.english, MessageOf(INT32_MIN, platform::kLanguageEnglish));
  for (const int32_t language : {0, 3, 5, 0x0404, -4}) {
    EXPECT_EQ("VEXO print error.", MessageOf(-100, language)) << language;
  }
}

TEST(ErrorText, UsesTheUsersLanguageAndDecimalForSystemErrors) {
  const std::pair<const char*, const char*> rows[] = {{"en_US.UTF-8", "The operation completed successfully."},
                                                      {"zh_TW", "操作成功完成。"}};
  const char* const before = std::getenv("LC_ALL");
  const std::string locale = before != nullptr ? before : "";
  for (const auto& [name, text] : rows) {
    setenv("LC_ALL", name, 1);
    EXPECT_EQ(ToGbk(text), GetErrorText(0)) << name;
    EXPECT_EQ("5", GetErrorText(5));
    EXPECT_EQ("2147483647", GetErrorText(INT32_MAX));
  }
  setenv("LC_ALL", locale.c_str(), 1);
}

}  // namespace
}  // namespace vexo
