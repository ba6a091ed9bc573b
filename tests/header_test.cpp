#include "welko/header_block.h"

#include "platform/system_version.h"
#include "tests/test_support.h"
#include "welko/interface_language.h"

namespace {

using HeaderTest = test::TreeTest;
using Entries = std::vector<std::pair<std::string, std::string>>;

TEST_F(HeaderTest, InterfaceLanguageIsTheFirstOneSpoken) {
  constexpr const char* kCases[][3] = {{"AR", "ar_MA.UTF-8", "fr_MA"},
                                       {"ar", "ar_EG", "en_AE"},
                                       {"xx:He:fr", "", "en_IL"},
                                       {"", "sv_FI.UTF-8@euro", "sv_SE"},
                                       {"xx", "", "en_US"}};
  for (const auto& [preferred, locale, code] : kCases) {
    setenv("LANGUAGE", preferred, 1);
    setenv("LANG", locale, 1);
    std::string out = "left over";
    EXPECT_TRUE(welko::GetUserInterfaceLanguage(out));
    EXPECT_EQ(out, code) << preferred << " " << locale;
  }
}

TEST(MapLanguageCode, CutsTheTagUntilItFits) {
  constexpr const char* kCases[][2] = {
      {"EN-GB", "en_GB"},   {"zh-HK", "zh_TW"},  {"zh-Hans-CN", "zh_CN"},
      {"zh-HANT", "zh_CN"}, {"es-419", "es_ES"}, {"fr-CA-x", "fr_CA"},
      {"DE-at", "de_DE"},   {"d", "unknown"},    {"xx-YY-variant", "unknown"}};
  for (const auto& [tag, code] : kCases) {
    std::string out = "unknown";
    const bool known = welko::MapLanguageCode(tag, out);
    EXPECT_EQ(out, code) << tag;
    EXPECT_EQ(known, out != "unknown") << tag;
  }
}

TEST_F(HeaderTest, DescribesTheSuiteAndTheSystemWhereTheTreeNamesThem) {
  const auto write = [this](const char* path, const std::string& key, const char* value) {
    test::WriteFile(root / path, "<plist><dict><key>" + key + "</key>" + value + "</dict></plist>");
  };
  const char* const suite =
      "Applications/Utilities/Vantre Lumora/Lumdesk/Lumora.app/Contents/Info.plist";
  write(suite, "CFBundleShortVersionString", "<string>5.1 &lt;b&gt;</string>");
  write("System/Library/CoreServices/SystemVersion.plist", "ProductVersion",
        "<string>11.6</string>");
  const platform::SystemVersion system = platform::FindSystemVersion().value();
  Entries expected = {{"Lumdesk Version: ", "5.1 <b>"},
                      {"Bit: ", "64"},
                      {"OS Locale: ", "en_US"},
                      {"OS Name: ", "Mac OS 11.6.0"},
                      {"OS Version: ", "11.6.0"}};
  EXPECT_EQ(welko::DescribeSystem(system).entries, expected);
  expected.erase(expected.begin());
  write(suite, "CFBundleShortVersionString", "<integer>5</integer>");
  EXPECT_EQ(welko::DescribeSystem(system).entries, expected);
}

TEST(HeaderBlock, ReplacesValuesInPlaceAndAppendsNewLabels) {
  welko::HeaderBlock block{"=", {{"b: ", "1"}, {"a: ", "2"}, {"c: ", "3"}}, "="};
  block.Replace({"<", {{"d: ", "4"}, {"c: ", ""}, {"b: ", "5"}}, ">"});
  EXPECT_EQ(block.top_line + block.bottom_line, "<>");
  EXPECT_EQ(block.entries, (Entries{{"b: ", "5"}, {"a: ", "2"}, {"c: ", ""}, {"d: ", "4"}}));
}

}  // namespace
