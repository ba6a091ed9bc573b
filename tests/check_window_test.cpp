#include "driver/check_window.h"

#include <ctime>
#include <map>

#include "driver/enabled_check.h"
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

TEST_F(CheckTest, WindowElapsesByTheLocalDateOfTheLastCheck) {
  const string due = "Scheduled check window has elapsed \n1";
  const string not_due = "Scheduled check window has not yet elapsed \n0";
  const string never = "Scheduled check frequency has been set to never. No need to run updater.\n";
  std::map<string, std::vector<string>> rows;  // today, last check and frequency, by the outcome
  rows[due] = {"2021-04-30 2021-04-29T23:59:59 0", "2021-04-30 2021-04-23T:: 1",
               "2021-04-30 2021-03-31T:: 2",       "2024-03-30 2024-02-29T:: -1",
               "2021-04-30 2021-04-30 0",          "2021-04-30 2021-02-30T:: 0"};
  rows[not_due] = {"2021-04-30 2021-04-30T00:00:00 0", "2021-04-30 2021-04-24T:: 1",
                   "2021-04-30 2021-04-01T:: 4",       "2024-03-30 2024-03-01T:: 2",
                   "2021-04-30 2020-01-01T:: daily",   "2021-04-30 2021-05-01T:: 0"};
  rows["Invalid Time 1:2:3:\n" + due] = {"2021-04-30 2021-04-30T1:2:3: 0"};
  rows["Updater has never been run on the machine.\n0"] = {"2021-04-30  0"};
  rows[never + "0"] = {"2021-04-30 2020-01-01T10:00 3"};
  for (const auto& [logged, cases] : rows) {
    for (const string& row : cases) {
      const string today = row.substr(0, 10), last = row.substr(11, row.rfind(' ') - 11);
      const string frequency = row.substr(row.rfind(' ') + 1);
      const auto text = [&](const string& date) {
        return PrefsText({{"LastDateCheck", date}, {"UpdaterPrefSchedCheckFreq", frequency}});
      };
      for (const char* time : {" 00:00:00", " 23:59:00"}) {
        WriteFile(prefs, text(last));
        SetLocalTime(today + time);
        EXPECT_EQ(Logged(wakerly::IsScheduledCheckWindowElapsed), logged) << row << time;
        EXPECT_EQ(test::ReadFile(prefs), text(last == "2021-05-01T::" ? today : last));
      }
    }
  }
}

TEST_F(CheckTest, UpdaterIsNotEnabledWhereNobodyCanTell) {
  const string enabled = "UCIsUpdaterEnabled : UpdaterIsEnabled.\n1";
  const string failed =
      "Error: CheckIfUpdaterIsEnabled - Failed to get admin preferences for updater suppression\n0";
  const std::pair<string, string> cases[] = {
      {"", enabled}, {"0", enabled}, {"<", enabled}, {"yes", failed}};
  for (const auto& [value, outcome] : cases) {
    WriteFile(admin_prefs, PrefsText({{"Suppressed", value}}));
    EXPECT_EQ(Logged(wakerly::CheckIfUpdaterIsEnabled), outcome) << value;
  }
  test::fs::remove_all(support);
  EXPECT_EQ(Logged(wakerly::CheckIfUpdaterIsEnabled), "0");
}

}  // namespace
