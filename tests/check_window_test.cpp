#include "driver/check_window.h"

#include <unistd.h>

#include <ctime>
#include <map>

#include "driver/enabled_check.h"
#include "esd/log/updater_log.h"
#include "esd/prefs/resource_locker.h"
#include "tests/test_support.h"

namespace {

using std::string;

struct CheckTest : test::TreeTest {
  /// The lines that `check` logs in a process of its own, and its answer.
  string Run(const std::function<bool()>& check) {
    test::WriteFile(top / "log", "");  // the same file, for its lock
    const auto body = [&] { return esd::InitUpdaterLog(top / "log", 3, "", "", "") && check(); };
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
    test::WriteFile(top / text, zone + string("\0\0ABC\0", 6));
    setenv("TZ", (":" + (top / text).string()).c_str(), 1);
    tzset();
  }
  const test::fs::path support = "Library/Application Support/Vantre";
};

TEST_F(CheckTest, WindowElapsesByTheLocalDateOfTheLastCheck) {
  test::fs::create_directories(root / support);
  const test::fs::path file = home / support / "OrlanUpdater/1.0/VantreUpdaterPrefs.dat";
  const string due = "Scheduled check window has elapsed \n1", bad = "Invalid Time ";
  const string not_due = "Scheduled check window has not yet elapsed \n0";
  const string never = "Scheduled check frequency has been set to never. No need to run updater.\n";
  std::map<string, std::vector<string>> rows;  // today, last check and frequency, by the outcome
  rows[due] = {"2021-04-30 2021-04-29T23:59:59 ", "2021-04-30 2021-04-23T:: 1",
               "2021-04-30 2021-03-31T:: 2",      "2021-04-30 2021-04-30 0",
               "2021-04-30 T10:00:00 0",          "2021-04-30 soonT:: 0",
               "2021-04-30 2021-02-30T:: 0",      "2024-03-30 2024-02-29T:: -1"};
  rows[not_due] = {"2021-04-30 2021-04-30T00:00:00 0", "2021-04-30 2021-04-24T:: 1",
                   "2021-04-30 2021-04-01T:: 4",       "2021-04-30 2020-01-01T:: daily",
                   "2021-04-30 2021-05-01T:: 0",       "2024-03-30 2024-03-01T:: 2"};
  rows[bad + "\n" + due] = {"2021-04-30 2021-04-30T 0"};
  rows[bad + "10:00\n" + due] = {"2021-04-30 2021-04-30T10:00 0"};
  rows[bad + "1:2:3:\n" + due] = {"2021-04-30 2021-04-30T1:2:3: 0"};
  rows["Updater has never been run on the machine.\n0"] = {"2021-04-30  0"};
  rows[never + "0"] = {"2021-04-30 2020-01-01T10:00 3"};
  const string end = "</LastDateCheck>", middle = end + "<UpdaterPrefSchedCheckFreq>";
  for (const auto& [log, cases] : rows) {
    for (const string& row : cases) {
      const string today = row.substr(0, 10), last = row.substr(11, row.rfind(' ') - 11);
      const string values = last + middle + row.substr(row.rfind(' ') + 1);
      for (const char* time : {" 00:00:00", " 23:59:00"}) {
        test::WriteFile(file, "<Preferences><LastDateCheck>" + values +
                                  "</UpdaterPrefSchedCheckFreq></Preferences>");
        SetLocalTime(today + time);
        EXPECT_EQ(Run(wakerly::IsScheduledCheckWindowElapsed), log) << row << time;
        const string stored = ">" + (last == "2021-05-01T::" ? today : last) + end;  // the future
        EXPECT_NE(test::ReadFile(file).find(stored), string::npos) << row;
      }
    }
  }
}

TEST_F(CheckTest, UpdaterIsEnabledUnlessSuppressedOrUnknown) {
  const test::fs::path file =
      root / support / "OrlanUpdaterInventory/1.0/VantreUpdaterAdminPrefs.dat";
  const auto expect = [&](const string& message, const string& answer) {
    const string name = "<< CheckIfUpdaterIsEnabled >> call", end = answer + "\n" + answer;
    EXPECT_EQ(Run(wakerly::CheckIfUpdaterIsEnabled),
              "UpdaterWakerly: Stepped into " + name + ".\n" + message +
                  "UpdaterWakerly : Returning from " + name + " with return value -  = " + end);
  };
  const string enabled = "UCIsUpdaterEnabled : UpdaterIsEnabled.\n";
  const string suppressed = "CheckIfUpdaterIsEnabled : UpdaterIsNotEnabled.\n";
  const string failed =
      "Error: CheckIfUpdaterIsEnabled - Failed to get admin preferences for updater suppression\n";
  expect("", "0");  // no folder
  test::fs::create_directories(root / support);
  expect(enabled, "1");
  const std::pair<string, string> cases[] = {
      {"", enabled}, {"0", enabled}, {"yes", failed}, {"<", enabled}, {"1", suppressed}};
  for (const auto& [value, message] : cases) {
    test::WriteFile(file, "<Preferences><Suppressed>" + value + "</Suppressed></Preferences>");
    expect(message, message == enabled ? "1" : "0");
  }
  esd::ResourceLocker locker(file, 3000);
  test::InChild([&] { return locker.Lock() ? _exit(0), 0 : 1; });
  expect(failed, "0");
  EXPECT_TRUE(locker.Unlock(true));
}

}  // namespace
