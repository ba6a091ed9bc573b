#include "esd/prefs/updater_prefs.h"

#include <unistd.h>

#include <regex>

#include "driver/check_window.h"
#include "driver/startup_logging.h"
#include "esd/log/updater_log.h"
#include "tests/run_support.h"

namespace {

using esd::VantreUpdaterPrefs;
using test::WriteFile;

using Entries = std::vector<std::pair<std::string, std::string>>;

struct UpdaterPrefs : test::RunTest {
  /// Expects `after` in the file when the preferences have been loaded from `before`.
  void ExpectLoaded(const Entries& before, const Entries& after) const {
    WriteFile(prefs, test::PrefsText(before));
    EXPECT_EQ(test::InChild([] { return VantreUpdaterPrefs::GetInstance(false), 0; }), 0);
    EXPECT_EQ(test::ReadFile(prefs), test::PrefsText(after));
  }
};

TEST_F(UpdaterPrefs, HaveDefaultsAndOneFile) {
  VantreUpdaterPrefs& own = VantreUpdaterPrefs::GetInstance(true);
  EXPECT_EQ(&VantreUpdaterPrefs::GetInstance(false), &own);
  EXPECT_TRUE(own.GetDownloadDirPref().IsDefault(prefs_folder / "Install"));
  EXPECT_TRUE(own.GetUserCacheTillOrlanUPdaterPref().IsDefault(prefs_folder.parent_path()));
  EXPECT_TRUE(own.GetlogFileLibPref().IsDefault(prefs_folder / "orlanuuLib.log"));
  EXPECT_TRUE(own.GetUpdaterDailyScheduledTimeHHPref().IsDefault(2));
  EXPECT_TRUE(own.GetProxyPortPref().Set("1"));
  EXPECT_EQ(test::Names(prefs_folder),
            (test::Lines{"VantreUpdaterOrlaneePrefs.dat", "orlanul.log"}));
}

template <typename T>
std::string DefaultOf(esd::BasicPref<T>& pref) {
  T value{};
  EXPECT_TRUE(pref.Get(value));
  return (std::ostringstream() << value).str();
}
template <typename V>
std::string DefaultOf(esd::MapPref<std::string, V>& /*pref*/) {
  return "";
}

TEST_F(UpdaterPrefs, AreListedInTheirDocumentWithTypeAndDefault) {
  const std::map<std::string, std::string> types = {{"BoolPref", "boolean"},
                                                    {"IntPref", "whole number"},
                                                    {"CountPref", "count"},
                                                    {"StringPref", "text"},
                                                    {"BoolMapPref", "map of booleans"},
                                                    {"StringMapPref", "map of texts"}};
  VantreUpdaterPrefs& own = VantreUpdaterPrefs::GetInstance(false);
  std::vector<std::string> schema, document;
  const auto add = [&](const char* type, const std::string& key, std::string value) {
    for (const auto& [folder, name] : Entries{{prefs_folder, "F"}, {home, "~"}}) {
      if (value.starts_with(folder)) value.replace(0, folder.size(), name);
    }
    if (!value.empty()) value = " `" + value + "`";
    schema.push_back("| `" + key + "` | " + types.at(type) + " |" + value + " |");
  };
#define VANTRE_ADD(Type, key, ...) add(#Type, #key, DefaultOf(own.Get##key##Pref()));
  VANTRE_UPDATER_PREFS(VANTRE_ADD)
#undef VANTRE_ADD
  const std::regex row(
      R"((\| `\w+` \| (?:boolean|whole number|count|text|map of \w+) \|[^|]*\|).*)");
  for (const std::string& line : test::ReadLines(PREFERENCES_DOCUMENT)) {
    std::smatch match;
    if (std::regex_match(line, match, row)) document.push_back(match[1]);
  }
  EXPECT_EQ(document, schema);
}

TEST_F(UpdaterPrefs, AreWipedWhenTheUninstallStampDiffers) {
  const Entries kept = {{"LogLevel", "4"}, {"uninstallts", "one"}};
  ExpectLoaded(kept, kept);
  const std::pair<const char*, const char*> stamps[] = {
      {"one", nullptr}, {" \n", nullptr}, {"\n two words\n", "two"}, {"One", "One"}};
  for (const auto& [stamp, stored] : stamps) {
    WriteFile(inventory / "uninstallts", stamp);
    ExpectLoaded(kept, stored != nullptr ? Entries{{"uninstallts", stored}} : kept);
  }
  esd::ResourceLocker locker(prefs, 3000);
  test::InChild([&] { return locker.Lock() ? _exit(0), 0 : 1; });  // stays behind
  ExpectLoaded(kept, kept);
  EXPECT_TRUE(locker.Unlock(true));
}

TEST_F(UpdaterPrefs, ForgetAScheduledTaskThatIsGoneAndNotNeeded) {
  test::fs::create_directories(home / "Library/Preferences");
  const auto agent = home / "Library/LaunchAgents/com.vantre.VantreOrlanUpdater-1.0.plist";
  const std::tuple<const char*, const char*, const char*, bool> cases[] = {
      {nullptr, "1", "0", true},  {"", "1", "0", true},        {"x", "1", "0", false},
      {nullptr, "1", "1", false}, {nullptr, "1", "no", false}, {nullptr, "0", "0", false}};
  for (const auto& [plist, added, needed, forgotten] : cases) {
    test::fs::remove(agent);
    if (plist != nullptr) WriteFile(agent, plist);
    Entries entries = {{"IsScheduledTaskAdded", added}, {"IsScheduledTaskNeeded", needed}};
    const Entries before = entries;
    if (forgotten) {
      entries[0].second = "0";
      entries.emplace_back("UpdaterPrefSchedCheckFreq", "3");
    }
    ExpectLoaded(before, entries);
  }
}

TEST_F(UpdaterPrefs, CannotBeMadeWithoutAFolderAndSayWhenTheInventoryIsMissing) {
  test::fs::remove_all(home / "Library");
  WriteFile(home / "Library", "");
  WriteFile(root / "tmp", "");
  esd::InitUpdaterLog(top / "log", 2, "", "", "");
  EXPECT_THROW(VantreUpdaterPrefs::GetInstance(false), std::runtime_error);
  EXPECT_TRUE(wakerly::SetUpStartupLogging());
  EXPECT_FALSE(wakerly::IsScheduledCheckWindowElapsed());
  esd::SetUpdaterPrefsFolderOverride(top / "own");
  EXPECT_FALSE(VantreUpdaterPrefs::GetInstance(false).GetLogLevelPref().Set(3));
  EXPECT_EQ(test::Messages(test::ReadLines(top / "log")).back(),
            "Could not get Updater Inventory path on machine ");
}

}  // namespace
