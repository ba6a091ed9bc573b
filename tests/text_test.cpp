#include <climits>

#include "esd/util/change_diff_type.h"
#include "esd/util/format_string.h"
#include "tests/test_support.h"

namespace {

TEST(FormatString, ReplacesNumberedPlaceholders) {
  constexpr const char* kCases[][2] = {{"%9%8%7%6%5%4%2 %1", "987654two -2147483648"},
                                       {"%%0 %x%- \xC3\xA9%%%", "%0 %x%- \xC3\xA9%%"},
                                       {"a%2b%10c%0", "atwob failed"},
                                       {"%18446744073709551616", " failed"},
                                       {"%02%3%0009.", "two%09."}};
  for (const auto& [format, text] : kCases) {
    std::string out = "left over";
    if (!esd::FormatString(out, format, "zero", INT_MIN, "two", "%0", "4", "5", "6", "7", "8", "9"))
      out += " failed";
    EXPECT_EQ(out, text) << format;
  }
}

TEST(ChangeDiffType, LeavesTheTargetWhereATextIsNoInteger) {
  constexpr std::pair<const char*, int> kCases[] = {{" +07\n", 7},     {"-2147483648", INT_MIN},
                                                    {"2147483648", 5}, {"0x10", 5},
                                                    {"4 2", 5},        {" ", 5}};
  for (const auto& [text, value] : kCases) {
    int out = 5;
    EXPECT_EQ((esd::ChangeDiffTypeImpl<const char*, int>::ChangeType(text, out)), value != 5);
    EXPECT_EQ(out, value) << text;
  }
}

}  // namespace
