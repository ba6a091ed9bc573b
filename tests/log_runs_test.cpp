// The runs that the lines of a log tell of, mixed and cut off as a log has them.
#include "ctl/log_runs.h"

#include "ctl/iso_time.h"
#include "tests/test_support.h"

namespace test {
namespace {

const std::string kBanner = ">>> Vantre Updater Log Begin >>>", kRule(78, '*');
const std::string kLauncher = "VantreUpdaterKodoLauncher : ";

std::string Row(const std::string& thread, const std::string& message,
                const std::string& time = "11/21/26 17:19:00:001") {
  return time + " | [INFO] |  | UPDATER | WAKERLY |  |  |  | " + thread + " | " + message;
}

class LogRuns : public TreeTest {
 protected:
  static void SetZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }
};

// A row is given as thread and message, "1 text"; a run as thread and messages, "1: a, b".
std::string SplitUp(const Lines& rows) {
  ctl::RunSplitter splitter;
  for (const std::string& row : rows) splitter.Take(Row(row.substr(0, 1), row.substr(2)));
  std::string text;
  std::size_t begun = 0;
  for (const ctl::LogRun& run : splitter.runs()) {
    text += run.thread + (run.has_begin ? ":" : " without its begin:");
    for (const std::string& message : Messages(run.lines)) text += " " + message;
    text += "\n";
    begun += run.has_begin ? 1 : 0;
  }
  EXPECT_EQ(splitter.begun(), begun);
  return text;
}

TEST_F(LogRuns, AreToldApartHoweverTheirLinesAreMixed) {
  const std::string begin = " " + kBanner, rule = " " + kRule;
  const std::tuple<const char*, Lines, std::string> rows[] = {
      {"nothing", {}, ""},
      {"a thread's id that comes again, twice",
       {"1" + begin, "1 a", "2" + begin, "1" + begin, "2 b", "1 c", "1" + begin},
       "1:" + begin + " a\n2:" + begin + " b\n1:" + begin + " c\n1:" + begin + "\n"},
      {"one cut off at its begin, and one at its end",
       {"1 a", "2" + begin, "1 b"},
       "1 without its begin: a b\n2:" + begin + "\n"},
      {"one cut off, and the next of its thread",
       {"1 a", "1" + begin},
       "1 without its begin: a\n1:" + begin + "\n"},
      {"two headers at once, each before its run",
       {"1" + rule, "2" + rule, "1 Bit", "2 Bits", "2" + rule, "2" + begin, "1" + rule,
        "1" + begin},
       "2:" + rule + " Bits" + rule + begin + "\n1:" + rule + " Bit" + rule + begin + "\n"},
      {"a header amidst a run, whose file was emptied",
       {"1" + begin, "1" + rule, "1 Bit", "1" + rule, "1 a", "1 b"},
       "1:" + begin + rule + " Bit" + rule + " a b\n"},
      {"a header for the next run of a thread",
       {"1" + begin, "1" + rule, "1 Bit", "1" + rule, "1" + begin},
       "1:" + begin + "\n1:" + rule + " Bit" + rule + begin + "\n"},
      {"a header whose end is cut off", {"1" + rule, "1 Bit"}, ""},
      {"stars that are no rule",
       {"1" + begin, "1 *", "1 ****!", "1 a"},
       "1:" + begin + " * ****! a\n"}};
  for (const auto& [name, lines, runs] : rows) EXPECT_EQ(SplitUp(lines), runs) << name;
}

TEST_F(LogRuns, HaveLinesOfOneFormAlone) {
  SetZone("CET-1CEST,M3.5.0,M10.5.0/3");
  const std::string good = Row("12", "a | b");
  const auto line = ctl::ParseLogLine(good);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->thread + ": " + line->message, "12: a | b");
  EXPECT_EQ(line->text, good);
  for (const auto& [time, found] : {std::pair{"11/21/26 17:19:03:999", "2026-11-21T17:19:03+01:00"},
                                    {"07/01/00 00:00:00:000", "2000-07-01T00:00:00+02:00"},
                                    {"02/29/28 23:59:59:000", "2028-02-29T23:59:59+01:00"}}) {
    EXPECT_EQ(ctl::ToIsoTime(ctl::ParseLogLine(Row("1", "", time))->time), found);
  }
  const Lines others = {"",
                        "half a li",
                        Row("12", "").substr(0, good.size() - 8),
                        Row("1", "a", "11/21/26 17:19:00"),
                        Row("1", "a", "11/21/26 17:19:00.001"),
                        Row("1", "a", "1l/21/26 17:19:00:001"),
                        " " + good,
                        "11/21/26 17:19:00:001 | [INFO] |  | UPDATER | NOTIFIER |  |  |  | 1 | a",
                        "11/21/26 17:19:00:001 | [INFO] |  | OTHER | WAKERLY |  |  |  | 1 | a"};
  for (const std::string& row : others) EXPECT_FALSE(ctl::ParseLogLine(row)) << '"' << row << '"';
}

TEST_F(LogRuns, SayAnOffsetThatIsNoWholeHourAndOneToTheWest) {
  SetZone("XST3:30");
  EXPECT_EQ(ctl::ToIsoTime(0), "1969-12-31T20:30:00-03:30");
}

std::string Told(const ctl::LogRun& run) {
  const auto either = [](const std::optional<bool>& told, const char* yes, const char* no) {
    return std::string(!told ? "" : *told ? yes : no);
  };
  return either(run.is_scheduled, " scheduled", " logon") +
         either(run.is_enabled, " enabled", " disabled") + either(run.is_due, " due", " not-due") +
         (run.calls_notifier ? " notifier" : "") + (run.reaches_library ? " library" : "") +
         (run.ends_library ? " unloaded" : "") + (run.has_end ? " end" : "") +
         (run.failure ? " [" + *run.failure + "]" : "");
}

// What a whole run tells is compared with real ones elsewhere; here its lines stop at odd places.
TEST_F(LogRuns, TellNoMoreThanTheirLinesDo) {
  const std::string thrown = kLauncher + "Error encountered in Kodo WorkFlow = std::exception";
  const std::string load = "Unable to load kodo library from path  = /x";
  const std::pair<Lines, std::string> rows[] = {
      {{"Application Version: 1"}, ""},
      {{"Wakerly : Loaded at startup/logon.", "Wakerly : Window is NOT Elapsed."},
       " logon not-due"},
      {{"Wakerly : WARNING - Updater is NOT enabled."}, " disabled"},
      {{"Wakerly Error: Unable to get the Orlan Update Notifier executable path."}, " end"},
      {{kLauncher + "inside initialize."}, " library"},
      {{kLauncher + load}, " library [" + load + "]"},
      {{kLauncher + load, thrown}, " library end [" + load + "]"},
      {{thrown}, " library end [" + thrown.substr(kLauncher.size()) + "]"},
      {{kLauncher + "Unknown Error encountered in Kodo WorkFlow "},
       " library end [Unknown Error encountered in Kodo WorkFlow ]"},
      {{kLauncher + "VantreKD_InvokeApplication returned error code  = 3",
        kLauncher + "unloaded kodo library"},
       " library unloaded end [VantreKD_InvokeApplication returned error code  = 3]"},
      {{kLauncher + "unloaded kodo library", "more"}, " library unloaded"},
      {{"Unable to load kodo library, says somebody else"}, ""}};
  for (const auto& [messages, told] : rows) {
    ctl::RunSplitter splitter;
    for (const std::string& message : messages) splitter.Take(Row("1", message));
    EXPECT_EQ(Told(splitter.runs().front()), told) << "from\n" << Text(messages);
  }
}

}  // namespace
}  // namespace test
