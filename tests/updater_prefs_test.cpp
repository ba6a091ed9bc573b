#include "esd/prefs/updater_prefs.h"

#include <unistd.h>

#include "driver/check_window.h"
#include "driver/startup_logging.h"
#include "esd/log/updater_log.h"
#include "esd/prefs/launch_agent.h"
#include "tests/test_support.h"

namespace {

using esd::VantreUpdaterPrefs;
using test::ReadFile, test::WriteFile;

std::string Document(const std::string& entries) {
  const std::string declaration = R"(<?xml version="1.0" encoding="UTF-8" ?>)";
  return declaration + "\n<Preferences>\n" + entries + "</Preferences>\n";
}

std::string Entry(const std::string& key, const std::string& value) {
  return "<" + key + ">" + value + "</" + key + ">\n";
}

struct UpdaterPrefs : test::TreeTest {
  const test::fs::path library = "Library/Application Support/Vantre", support = home / library;
  const test::fs::path folder = support / "OrlanUpdater/1.0",
                       file = folder / "VantreUpdaterPrefs.dat";

  /// What the file holds when the preferences have been loaded from `entries`.
  std::string Load(const std::string& entries) {
    WriteFile(file, Document(entries));
    EXPECT_EQ(test::InChild([] { return VantreUpdaterPrefs::GetInstance(false), 0; }), 0);
    return ReadFile(file);
  }
};

TEST_F(UpdaterPrefs, AreWrittenBackByTheFirstRunOfAFreshMachine) {
  const auto run = [] { return wakerly::SetUpStartupLogging() ? 0 : 1; };
  const std::string log = folder / "orlanul.log";
  EXPECT_EQ(test::InChild(run), 0);
  EXPECT_EQ(ReadFile(file), Document(Entry("StartupLogFile", log) + Entry("LogLevel", "2")));
  for (const char* level : {"0", "abc", "-1"}) {
    WriteFile(log, "");  // the same file, for its lock
    WriteFile(file, Document(Entry("LogLevel", level)));
    EXPECT_EQ(test::InChild(run), 0);
    const bool unset = level == std::string("-1");
    EXPECT_EQ(ReadFile(file),
              Document(Entry("LogLevel", unset ? "2" : level) + Entry("StartupLogFile", log)));
    EXPECT_NE(ReadFile(log).empty(), unset) << level;
  }
}

TEST_F(UpdaterPrefs, HaveDefaults) {
  VantreUpdaterPrefs& prefs = VantreUpdaterPrefs::GetInstance(true);
  EXPECT_EQ(&VantreUpdaterPrefs::GetInstance(false), &prefs);
  EXPECT_TRUE(prefs.GetDownloadDirPref().IsDefault(folder / "Install"));
  EXPECT_TRUE(prefs.GetUserCachePref().IsDefault(support));
  EXPECT_TRUE(prefs.GetUserCacheTillOrlanUPdaterPref().IsDefault(support / "OrlanUpdater"));
  EXPECT_TRUE(prefs.GetlogFileLibPref().IsDefault(folder / "orlanuuLib.log"));
  int hour = 0, level = 0;
  EXPECT_TRUE(prefs.GetUpdaterDailyScheduledTimeHHPref().Get(hour) && hour == 2);
  EXPECT_TRUE(prefs.GetLogLevelPref().Get(level) && level == 2);
  EXPECT_TRUE(prefs.GetProxyPortPref().Set("1"));
  EXPECT_EQ(test::Names(folder), std::vector<std::string>{"VantreUpdaterOrlaneePrefs.dat"});
}

TEST_F(UpdaterPrefs, AreWipedWhenTheUninstallStampDiffers) {
  const std::string kept = Entry("LogLevel", "4") + Entry("uninstallts", "one");
  EXPECT_EQ(Load(kept), Document(kept));
  const std::pair<const char*, const char*> stamps[] = {
      {"one", nullptr}, {"", nullptr}, {" \n", nullptr}, {"\n two words\n", "two"}, {"One", "One"}};
  for (const auto& [stamp, stored] : stamps) {
    WriteFile(root / library / "OrlanUpdaterInventory/1.0/uninstallts", stamp);
    EXPECT_EQ(Load(kept), Document(stored != nullptr ? Entry("uninstallts", stored) : kept))
        << stamp;
  }
  esd::ResourceLocker locker(file, 3000);
  test::InChild([&] { return locker.Lock() ? _exit(0), 0 : 1; });  // stays behind
  EXPECT_EQ(Load(kept), Document(kept));
  EXPECT_TRUE(locker.Unlock(true));
}

TEST_F(UpdaterPrefs, ForgetAScheduledTaskThatIsGoneAndNotNeeded) {
  test::fs::create_directories(home / "Library/Preferences");
  const auto agent = home / "Library/LaunchAgents/com.vantre.VantreOrlanUpdater-1.0.plist";
  const struct {
    const char *plist, *added, *needed;
    bool forgotten;
  } cases[] = {{nullptr, "1", "0", true},  {"", "1", "0", true},       {"x", "1", "0", false},
               {nullptr, "1", "1", false}, {nullptr, "0", "0", false}, {nullptr, "1", "no", false},
               {nullptr, "1", "", false}};
  for (const auto& [plist, added, needed, forgotten] : cases) {
    test::fs::remove(agent);
    if (plist != nullptr) WriteFile(agent, plist);
    const std::string rest = Entry("IsScheduledTaskNeeded", needed);
    const std::string before = Entry("IsScheduledTaskAdded", added) + rest;
    const std::string after =
        Entry("IsScheduledTaskAdded", "0") + rest + Entry("UpdaterPrefSchedCheckFreq", "3");
    EXPECT_EQ(Load(before), Document(forgotten ? after : before)) << before;
  }
}

TEST_F(UpdaterPrefs, TellWhyTheLaunchAgentIsNotFound) {
  char buffer[8] = "";
  std::uint32_t code = 1;
  EXPECT_TRUE(!esd::GetLaunchAgentsFolder(code, nullptr, 8, false) && code == 120);
  EXPECT_TRUE(!esd::GetLaunchAgentsFolder(code, buffer, 0, false) && code == 120);
  EXPECT_TRUE(!esd::IsScheduledTaskPresent(code, L"") && code == 73);
  test::fs::create_directories(home / "Library/Preferences");
  EXPECT_TRUE(!esd::IsScheduledTaskPresent(code, L"") && code == 0);
  EXPECT_TRUE(esd::GetLaunchAgentsFolder(code, buffer, 8, false));
  EXPECT_EQ(buffer, home.string().substr(0, 7));
}

TEST_F(UpdaterPrefs, CannotBeMadeWithoutAFolderAndSayWhenTheInventoryIsMissing) {
  WriteFile(home / "Library", "");
  WriteFile(root / "tmp", "");
  esd::InitUpdaterLog(top / "log", 2, "", "", "");
  EXPECT_THROW(VantreUpdaterPrefs::GetInstance(false), std::runtime_error);
  EXPECT_TRUE(wakerly::SetUpStartupLogging() && !wakerly::IsScheduledCheckWindowElapsed());
  esd::SetUpdaterPrefsFolderOverride(top / "own");
  EXPECT_FALSE(VantreUpdaterPrefs::GetInstance(false).GetLogLevelPref().Set(3));
  EXPECT_EQ(test::Messages(test::ReadLines(top / "log")).back(),
            "Could not get Updater Inventory path on machine ");
}

}  // namespace
