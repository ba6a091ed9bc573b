#include "welko/interface_language.h"

#include "tests/test_support.h"

namespace test {
namespace {

TEST(InterfaceLanguage, IsThatOfTheTag) {
  std::vector<std::pair<std::string, std::string>> rows = {
      {"en", "en_US"},     {"es", "es_ES"},     {"fr", "fr_FR"},         {"zh", "zh_CN"},
      {"fr_ca", "fr_CA"},  {"fr-ca", "fr_CA"},  {"fr-CA-x", "fr_CA"},    {"EN-GB", "en_GB"},
      {"zh_HK", "zh_TW"},  {"zh-HK", "zh_TW"},  {"zh-Hant-CN", "zh_TW"}, {"zh-HANT", "zh_CN"},
      {"es-419", "es_ES"}, {"xx-YY", "nothing"}};
  for (const char* code :
       {"cs_CZ", "da_DK", "de_DE", "el_GR", "en_US", "es_ES", "fi_FI", "fr_FR", "hu_HU",
        "it_IT", "ja_JP", "ko_KR", "nb_NO", "nl_NL", "pl_PL", "pt_BR", "ro_RO", "ru_RU",
        "sv_SE", "tr_TR", "uk_UA", "zh_CN", "en_GB", "es_LA", "es_NA", "fr_CA", "zh_TW"}) {
    rows.emplace_back(code, code);
  }
  for (const auto& [tag, expected] : rows) {
    std::string code = "nothing";
    welko::MapLanguageCode(tag, code);
    EXPECT_EQ(code, expected) << "for the tag " << tag;
  }
}

}  // namespace
}  // namespace test
