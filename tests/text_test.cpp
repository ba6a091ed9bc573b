#include <climits>
#include <locale>
#include <optional>

#include "esd/util/change_diff_type.h"
#include "esd/util/format_string.h"
#include "tests/test_support.h"

namespace {

using std::nullopt, std::optional;

// None for a conversion that fails, which must leave its target alone.
template <typename To, typename From>
optional<To> Convert(const From& in, To untouched) {
  To out = untouched;
  if (esd::ChangeDiffTypeImpl<From, To>::ChangeType(in, out)) return out;
  EXPECT_EQ(out, untouched) << "after a conversion that failed";
  return nullopt;
}

TEST(ValueConversion, TakesOneWholeValueBetweenBlanks) {
  const std::tuple<std::string, optional<int>, optional<unsigned long>, optional<bool>> rows[] = {
      {"0", 0, 0, false},
      {" 1 ", 1, 1, true},
      {"2", 2, 2, nullopt},
      {"42 ", 42, 42, nullopt},
      {"-1", -1, ULONG_MAX, nullopt},
      {"2147483648", nullopt, 2147483648, nullopt},
      {"18446744073709551616", nullopt, nullopt, nullopt},
      {"0x10", nullopt, nullopt, nullopt},
      {"4 2", nullopt, nullopt, nullopt},
      {"", nullopt, nullopt, nullopt}};
  for (const auto& [text, number, count, boolean] : rows) {
    SCOPED_TRACE("of \"" + text + '"');
    EXPECT_EQ(Convert<int>(text, 77), number);
    EXPECT_EQ(Convert<unsigned long>(text, 77), count);
    EXPECT_EQ(Convert<bool>(text, true), boolean);
  }
}

// A loaded library may set the locale of the whole process.
TEST(ValueConversion, DoesNotDependOnTheLocale) {
  struct Grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\3"; }
  };
  test::ExpectInChild([] {
    std::locale::global(std::locale(std::locale(), new Grouping));
    const auto text = Convert<std::string>(1234567, "");
    std::locale::global(std::locale::classic());  // GoogleTest's own numbers depend on it
    EXPECT_EQ(text, "1234567");
  });
}

TEST(FormatString, PutsEachArgumentWhereItsNumberStands) {
  std::string out = "left over";
  EXPECT_TRUE(esd::FormatString(out, "%9%8%7%6%5%4%3%2 %1 %0", "zero", INT_MIN, "2", "3", "4", "5",
                                "6", "7", "8", "9"));
  EXPECT_EQ(out, "98765432 -2147483648 zero");
}

}  // namespace
