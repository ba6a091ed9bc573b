#include <climits>
#include <locale>
#include <optional>

#include "esd/util/change_diff_type.h"
#include "esd/util/format_string.h"
#include "esd/util/path.h"
#include "tests/test_support.h"
#include "welko/path.h"

namespace {

constexpr std::nullopt_t kNone = std::nullopt;

// None for a conversion that fails, which must leave its target alone.
template <typename To, typename From>
std::optional<To> Convert(const From& in, To untouched) {
  To out = untouched;
  if (esd::ChangeDiffTypeImpl<From, To>::ChangeType(in, out)) return out;
  EXPECT_EQ(out, untouched) << "after a conversion that failed";
  return kNone;
}

TEST(ValueConversion, TakesOneWholeValueBetweenBlanks) {
  const struct {
    std::string text;
    std::optional<int> number;
    std::optional<unsigned long> count;
    std::optional<bool> boolean;
  } rows[] = {{"0", 0, 0, false},
              {" 1 ", 1, 1, true},
              {"2", 2, 2, kNone},
              {"42 ", 42, 42, kNone},
              {"-1", -1, ULONG_MAX, kNone},
              {"2147483648", kNone, 2147483648, kNone},
              {"18446744073709551616", kNone, kNone, kNone},
              {"0x10", kNone, kNone, kNone},
              {"4 2", kNone, kNone, kNone},
              {"yes", kNone, kNone, kNone},
              {"", kNone, kNone, kNone}};
  for (const auto& row : rows) {
    SCOPED_TRACE("of \"" + row.text + '"');
    EXPECT_EQ(Convert<int>(row.text, 77), row.number);
    EXPECT_EQ(Convert<unsigned long>(row.text, 77), row.count);
    EXPECT_EQ(Convert<bool>(row.text, false), row.boolean);
    EXPECT_EQ(Convert<bool>(row.text, true), row.boolean);
  }
}

// A loaded library may set the locale of the whole process.
TEST(ValueConversion, DoesNotDependOnTheLocale) {
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  test::ExpectInChild([] {
    std::locale::global(std::locale(std::locale(), new Grouping));
    const auto text = Convert<std::string>(1234567, "");
    const auto number = Convert<int>(std::string("1.234"), 77);
    std::locale::global(std::locale::classic());  // GoogleTest's own numbers depend on it
    EXPECT_EQ(text, "1234567");
    EXPECT_EQ(number, kNone);
  });
}

TEST(FormatString, ReplacesNumberedPlaceholders) {
  const std::tuple<const char*, bool, const char*> rows[] = {
      {"", true, ""},
      {"%9%8%7%6%5%4%2 %1", true, "987654two -2147483648"},
      {"%%0 %x%- \xC3\xA9%%%", true, "%0 %x%- \xC3\xA9%%"},
      {"%02%3%0009.", true, "two%09."},  // an argument is not looked through again
      {"a%2b%10c%0", false, "atwob"},
      {"%18446744073709551616", false, ""}};
  for (const auto& [format, good, text] : rows) {
    std::string out = "left over";
    EXPECT_EQ(
        esd::FormatString(out, format, "zero", INT_MIN, "two", "%0", "4", "5", "6", "7", "8", "9"),
        good)
        << format;
    EXPECT_EQ(out, text) << format;
  }
}

TEST(Paths, JoinDropsOneLeadingSlashAndAppendDropsAll) {
  constexpr const char* kRows[][4] = {
      {"/a/", "//b", "/a//b", "/a/b"}, {"/a", "", "/a/", "/a"}, {"", "b", "/b", ""}};
  for (const auto& [path, name, joined, appended] : kRows) {
    EXPECT_EQ(esd::JoinPath(path, name), joined) << path << " and " << name;
    std::string result = path;
    welko::AppendPathComponent(result, name);
    EXPECT_EQ(result, appended) << path << " and " << name;
  }
}

}  // namespace
