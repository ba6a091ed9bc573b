#include "driver/check_window.h"

#include <ctime>

#include "esd/log/updater_log.h"
#include "tests/run_support.h"

namespace {

using std::string;
using test::PrefsText, test::WriteFile;

struct CheckTest : test::RunTest {
  CheckTest() { test::fs::create_directories(support); }

  /// The lines that `check` logs in a process of its own, and its answer.
  string Logged(const std::function<bool()>& check) {
    WriteFile(top / "log", "");  // the same file, for its lock
    const auto body = [&] { return esd::InitUpdaterLog(top / "log", 2, "", "", "") && check(); };
    string text = std::to_string(test::InChild(body));
    auto messages = test::Messages(test::ReadLog(top / "log"));
    for (; messages.size() > 7; messages.pop_back()) text = messages.back() + "\n" + text;
    return text;  // without the header block and the banner
  }
  /// Makes it that time here: a time zone may lie years away (tzfile(5)).
  void SetLocalTime(const string& text) {
    std::tm local{};
    strptime(text.c_str(), "%Y-%m-%d %T", &local);
    const auto offset = static_cast<unsigned>(timegm(&local) - std::time(nullptr));
    string zone = "TZif" + string(35, '\0') + '\1' + string("\0\0\0\4", 4);
    for (const int shift : {24, 16, 8, 0}) zone += static_cast<char>(offset >> shift);
    WriteFile(top / text, zone + string("\0\0ABC\0", 6));
    setenv("TZ", (":" + (top / text).string()).c_str(), 1);
    tzset();
  }
};

// The date is the local one: half a day away from Greenwich it is another.
TEST_F(CheckTest, WindowElapsesByTheLocalDateAndReplacesADateAhead) {
  struct Row {
    const char *now, *last_check, *frequency, *logged, *kept;
  };
  const char* const not_due = "Scheduled check window has not yet elapsed \n0";
  const char* const due = "Scheduled check window has elapsed \n1";
  const Row rows[] = {
      {"2021-04-30 00:00:00", "2021-04-29T23:59:59", "0", due, "2021-04-29T23:59:59"},
      {"2021-04-29 23:59:00", "2021-04-29T23:59:59", "0", not_due, "2021-04-29T23:59:59"},
      {"2021-04-30 23:59:00", "2021-05-01T::", "0", not_due, "2021-04-30"},
      {"2021-04-30 12:00:00", "2021-04-01T::", "daily", not_due, "2021-04-01T::"},
      {"2021-04-30 12:00:00", "2021-04-30T1:2", "0",
       "Invalid Time 1:2\nScheduled check window has elapsed \n1", "2021-04-30T1:2"},
      {"2021-04-30 12:00:00", "", "0", "Updater has never been run on the machine.\n0", ""},
      {"2021-04-30 12:00:00", "2020-01-01T::", "3",
       "Scheduled check frequency has been set to never. No need to run updater.\n0",
       "2020-01-01T::"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(string("now ") + row.now + ", last check \"" + row.last_check +
                 "\", frequency \"" + row.frequency + "\"");
    const auto text = [&](const string& date) {
      return PrefsText({{"LastDateCheck", date}, {"UpdaterPrefSchedCheckFreq", row.frequency}});
    };
    WriteFile(prefs, text(row.last_check));
    SetLocalTime(row.now);
    EXPECT_EQ(Logged(wakerly::IsScheduledCheckWindowElapsed), row.logged);
    EXPECT_EQ(test::ReadFile(prefs), text(row.kept));
  }
}

}  // namespace
