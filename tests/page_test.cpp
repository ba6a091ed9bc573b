// An answer's two forms: the page for people, and the value for machines.
#include "ctl/page.h"

#include <cstdint>
#include <limits>

#include "ctl/value.h"
#include "tests/test_support.h"

namespace {

using ctl::Tone, ctl::Value;

constexpr ctl::Display kFile = {}, kScreen = {.is_terminal = true, .width = 30};

TEST(Page, BreaksLongTextBetweenWordsAndAlignsItOnATerminal) {
  ctl::Page page;
  page.AddTitle("A title that is longer than the screen");
  page.AddRow("log", Tone::kGood, "goes to a file whose name is /a/word/longer/than/a/line here");
  page.AddDetail("and on, in words");
  page.AddRow("notifier", Tone::kPlain, "");
  page.AddRow("a label that is wider than all", Tone::kBad, "text");
  page.AddTitle("Next");
  page.AddVerbatim("a command that is longer than the screen, to paste");
  EXPECT_EQ(page.Render(kScreen),
            "A title that is longer than\n"
            "the screen\n"
            "log       goes to a file whose\n"
            "          name is\n"
            "          /a/word/longer/than/a/line\n"
            "          here\n"
            "          and on, in words\n"
            "notifier\n"
            "a label that is wider than all\n"
            "          text\n"
            "\n"
            "Next\n"
            "a command that is longer than the screen, to paste\n");
  EXPECT_EQ(page.Render(kFile),
            "A title that is longer than the screen\n"
            "log  goes to a file whose name is /a/word/longer/than/a/line here\n"
            "  and on, in words\n"
            "notifier\n"
            "a label that is wider than all  text\n"
            "\n"
            "Next\n"
            "a command that is longer than the screen, to paste\n");
}

TEST(Page, CountsCharactersAndNotTheirBytesAndLeavesTextTwentyColumns) {
  const std::string label = "\xC3\xA4\xC3\xB6", euro = "\xE2\x82\xAC";
  ctl::Page page;
  page.AddRow(label, Tone::kPlain, "to the 22nd column " + euro + euro + euro);
  page.AddRow("x", Tone::kPlain, "beyond the 22nd col. " + euro + euro);
  const std::string beyond = "x   beyond the 22nd col.\n    " + euro + euro + "\n";
  const std::pair<std::size_t, std::string> rows[] = {{26, " "}, {25, "\n    "}, {0, "\n    "}};
  for (const auto& [width, gap] : rows) {
    EXPECT_EQ(page.Render({.is_terminal = true, .width = width}),
              label + "  to the 22nd column" + gap + euro + euro + euro + "\n" + beyond)
        << "at " << width << " columns";
  }
}

TEST(Page, LetsNoTextActOnATerminalOrPassForTwoLines) {
  ctl::Page page;
  const std::string text("a\n\x1b[31m\r\t\x7f\0\x80\xC3\xA4", 14);
  const std::string shown = "a??[31m????\x80\xC3\xA4";
  page.AddTitle(text);
  page.AddRow(text, Tone::kGood, text);
  page.AddDetail(text);
  page.AddVerbatim(text);
  EXPECT_EQ(page.Render(kFile),
            shown + "\n" + shown + "  " + shown + "\n  " + shown + "\n" + shown + "\n");
  EXPECT_EQ(ctl::Printable(text), shown);
}

TEST(Page, ColoursLabelsAloneAndKeepsTheirWidth) {
  ctl::Page page;
  page.AddRow("good", Tone::kGood, "x");
  page.AddRow("a", Tone::kNote, "y");
  page.AddRow("", Tone::kBad, "z");
  EXPECT_EQ(page.Render({.is_terminal = true, .has_colour = true}),
            "\x1b[32mgood\x1b[0m  x\n"
            "\x1b[33ma\x1b[0m     y\n"
            "      z\n");
}

TEST(Json, HasEveryKindOfValueInItsOrder) {
  const std::optional<int> nothing, seven = 7;
  const Value value = Value::Object{{"z", nullptr},
                                    {"a", Value::Array{true, -1, seven, nothing}},
                                    {"least", std::numeric_limits<std::int64_t>::min()},
                                    {"most", std::numeric_limits<std::uint64_t>::max()},
                                    {"none", Value::Object{}},
                                    {"empty", Value::Array{}},
                                    {"text", "\"\\/\n\x1f\x7f\xC3\xA4"}};
  EXPECT_EQ(ctl::ToJson(value), R"({
  "z": null,
  "a": [
    true,
    -1,
    7,
    null
  ],
  "least": -9223372036854775808,
  "most": 18446744073709551615,
  "none": {},
  "empty": [],
  "text": "\"\\/\n\u001f)"
                                "\x7f\xC3\xA4\"\n}\n");
}

// A path on disk can have any bytes.
TEST(Json, ReplacesWhatIsNoUtf8) {
  constexpr const char* kRows[][2] = {{"a\xFF"
                                       "b",
                                       "a\xEF\xBF\xBD"
                                       "b"},
                                      {"cut \xE2\x82", "cut \xEF\xBF\xBD"},
                                      {"\xC3(", "\xEF\xBF\xBD("}};
  for (const auto& [text, shown] : kRows) {
    EXPECT_EQ(ctl::ToJson(text), "\"" + std::string(shown) + "\"\n");
    EXPECT_NE(ctl::ToJson(Value::Object{{text, 1}}).find(shown), std::string::npos) << "as a name";
  }
}

}  // namespace
