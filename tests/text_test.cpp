#include <gtest/gtest.h>

#include <climits>

#include "esd/util/format_string.h"
#include "esd/util/path.h"
#include "welko/path.h"

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

TEST(Paths, JoinDropsOneLeadingSlashAndAppendDropsAll) {
  constexpr const char* kCases[][4] = {
      {"/a/", "//b", "/a//b", "/a/b"}, {"/a", "", "/a/", "/a"}, {"", "b", "/b", ""}};
  for (const auto& [path, name, joined, appended] : kCases) {
    EXPECT_EQ(esd::JoinPath(path, name), joined);
    std::string result = path;
    welko::AppendPathComponent(result, name);
    EXPECT_EQ(result, appended) << path << " and " << name;
  }
}

}  // namespace
