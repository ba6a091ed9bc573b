#include "welko/header_block.h"

#include <set>

#include "tests/log_support.h"
#include "welko/interface_language.h"

namespace test {
namespace {

using HeaderBlock = TreeTest;
using InterfaceLanguage = TreeTest;

std::string CodeOf(const std::string& tag) {
  std::string code = "nothing";
  welko::MapLanguageCode(tag, code);
  return code;
}

TEST_F(InterfaceLanguage, IsKnownByFourFormsOfItsCode) {
  std::set<std::string> known;
  for (const std::string code :
       {"cs_CZ", "da_DK", "de_DE", "el_GR", "en_US", "es_ES", "fi_FI", "fr_FR", "hu_HU",
        "it_IT", "ja_JP", "ko_KR", "nb_NO", "nl_NL", "pl_PL", "pt_BR", "ro_RO", "ru_RU",
        "sv_SE", "tr_TR", "uk_UA", "zh_CN", "en_GB", "es_LA", "es_NA", "fr_CA", "zh_TW"}) {
    const std::string language = code.substr(0, 2);
    std::string region = code.substr(3);
    for (char& letter : region) letter = static_cast<char>(std::tolower(letter));
    Lines tags = {code, language + "_" + region, language + "-" + region};
    if (known.insert(language).second) tags.push_back(language);  // stands for the first code
    for (const std::string& tag : tags) EXPECT_EQ(CodeOf(tag), code) << "for the tag " << tag;
  }
  EXPECT_EQ(CodeOf("zh_HK"), "zh_TW") << "Hong Kong reads the Taiwan texts";
}

TEST_F(InterfaceLanguage, IsTheFirstPreferredOneThatIsSpoken) {
  const struct {
    const char *languages, *locale, *code;
  } rows[] = {{"AR", "ar_DZ.UTF-8", "fr_MA"},   {"ar", "ar_TN", "fr_MA"},
              {"ar", "ar_MA", "fr_MA"},         {"ar", "ar_EG", "en_AE"},
              {"ar", "fr_MA", "en_AE"},         {"ar-MA:sv", "ar_MA", "sv_SE"},
              {"xx:He:fr", "C", "en_IL"},       {"xx", "C", "en_US"},
              {"EN-GB", "C", "en_GB"},          {"ES-LA", "C", "es_LA"},
              {"es-419", "C", "es_ES"},         {"fr-CA-x", "C", "fr_CA"},
              {"DE-at", "C", "de_DE"},          {"pt-PT", "C", "pt_BR"},
              {"d:fr", "C", "fr_FR"},           {"xx-YY-variant:fr", "C", "fr_FR"},
              {"zh-Hans-TW", "C", "zh_CN"},     {"zh-Hant-CN", "C", "zh_TW"},
              {"zh-HANT", "C", "zh_CN"},        {"zh-HK", "C", "zh_TW"},
              {"zh_HK", "C", "zh_TW"},          {"zh-SG", "C", "zh_CN"},
              {"", "sv_FI.UTF-8@euro", "sv_SE"}};
  for (const auto& row : rows) {
    setenv("LANGUAGE", row.languages, 1);
    setenv("LANG", row.locale, 1);
    std::string code = "left over";
    EXPECT_TRUE(welko::GetUserInterfaceLanguage(code));
    EXPECT_EQ(code, row.code) << "for \"" << row.languages << "\" in the locale " << row.locale;
  }
}

TEST_F(HeaderBlock, DescribesTheSuiteWhereItIsInstalledAndTheSystem) {
  const platform::SystemVersion system = {11, 6, 0};
  const auto lines = [&] {
    std::string text;
    for (const auto& [label, value] : welko::DescribeSystem(system).entries) {
      text += label + value + "\n";
    }
    return text;
  };
  const std::string expected =
      "Bit: 64\nOS Locale: en_US\nOS Name: Mac OS 11.6.0\nOS Version: 11.6.0\n";
  EXPECT_EQ(lines(), expected);
  WritePropertyList(
      root / "Applications/Utilities/Vantre Lumora/Lumdesk/Lumora.app/Contents/Info.plist",
      "CFBundleShortVersionString", "5.1 &lt;b&gt;");
  EXPECT_EQ(lines(), "Lumdesk Version: 5.1 <b>\n" + expected);
}

}  // namespace
}  // namespace test
