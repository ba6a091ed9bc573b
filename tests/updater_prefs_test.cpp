#include "esd/prefs/updater_prefs.h"

#include <regex>

#include "driver/check_window.h"
#include "driver/startup_logging.h"
#include "esd/log/updater_log.h"
#include "tests/run_support.h"

namespace {

using esd::VantreUpdaterPrefs;
using test::ReadFile, test::WriteFile;

using Entries = std::vector<std::pair<std::string, std::string>>;

// The preferences are one object for each process, so that every test loads them in another one.
struct UpdaterPrefs : test::RunTest {
  // Expects `after` in the file when the preferences have been loaded from `before`.
  void ExpectLoaded(const Entries& before, const Entries& after) const {
    WriteFile(prefs, test::PrefsText(before));
    test::ExpectInChild([] { VantreUpdaterPrefs::GetInstance(false); });
    EXPECT_EQ(ReadFile(prefs), test::PrefsText(after));
  }
};

TEST_F(UpdaterPrefs, AreOneObjectWithTheFileThatTheFirstCallChooses) {
  test::ExpectInChild([&] {
    VantreUpdaterPrefs& own = VantreUpdaterPrefs::GetInstance(true);
    EXPECT_EQ(&VantreUpdaterPrefs::GetInstance(false), &own);
    EXPECT_TRUE(own.GetLogLevelPref().Set(1));
    EXPECT_TRUE(own.GetLogLevelPref().IsDefault(2)) << "whatever is stored";
    EXPECT_FALSE(own.GetLogLevelPref().IsDefault(1)) << "whatever is stored";
  });
  EXPECT_EQ(test::Text(test::Names(prefs_folder)), "VantreUpdaterOrlaneePrefs.dat\norlanul.log\n");
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
  test::ExpectInChild([&] {
    const std::map<std::string, const char*> types = {{"BoolPref", "boolean"},
                                                      {"IntPref", "whole number"},
                                                      {"CountPref", "count"},
                                                      {"StringPref", "text"},
                                                      {"BoolMapPref", "map of booleans"},
                                                      {"StringMapPref", "map of texts"}};
    VantreUpdaterPrefs& own = VantreUpdaterPrefs::GetInstance(false);
    test::Lines schema, document;
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
    EXPECT_EQ(test::Text(document), test::Text(schema));
  });
}

TEST_F(UpdaterPrefs, ReplaceAFileWithoutAByteAndLeaveAMalformedOneAlone) {
  const struct {
    const char* before;
    bool can_set;
    std::string after;
  } rows[] = {{"", true,
               test::PrefsText(
                   {{"LogLevel",
                     "3"}})},  // as a killed program may leave it
                               // The first load takes no lock. With one it would remove the file.
              {"<Preferences><LogLevel>4", false, "<Preferences><LogLevel>4"}};
  for (const auto& row : rows) {
    SCOPED_TRACE("from \"" + std::string(row.before) + '"');
    WriteFile(prefs, row.before);
    test::ExpectInChild([&] {
      auto& pref = VantreUpdaterPrefs::GetInstance(false).GetLogLevelPref();
      int level = 0;
      EXPECT_TRUE(pref.Get(level));
      EXPECT_EQ(level, 2);
      EXPECT_EQ(pref.Set(3), row.can_set);
    });
    EXPECT_EQ(ReadFile(prefs), row.after);
  }
}

TEST_F(UpdaterPrefs, AreWipedWhenTheUninstallStampDiffers) {
  const Entries kept = {{"LogLevel", "4"}, {"uninstallts", "one"}};
  const std::tuple<const char*, const char*, Entries> rows[] = {
      {"no stamp", nullptr, kept},
      {"the same stamp", "one", kept},
      {"a stamp without a word", " \n", kept},
      {"the first word of a stamp", "\n two words\n", {{"uninstallts", "two"}}},
      {"a stamp in other letters", "One", {{"uninstallts", "One"}}}};
  for (const auto& [name, stamp, after] : rows) {
    SCOPED_TRACE(name);
    if (stamp != nullptr) WriteFile(inventory / "uninstallts", stamp);
    ExpectLoaded(kept, after);
  }
}

TEST_F(UpdaterPrefs, StayAsTheyAreWhileAnotherProcessHoldsTheirLock) {
  WriteFile(inventory / "uninstallts", "another");
  esd::ResourceLocker locker(prefs, 3000);
  ASSERT_TRUE(locker.Lock());
  const Entries kept = {{"LogLevel", "4"}, {"uninstallts", "one"}};
  ExpectLoaded(kept, kept);
}

TEST_F(UpdaterPrefs, ForgetAScheduledTaskThatIsGoneAndNotNeeded) {
  const Entries without_task = {{"IsScheduledTaskAdded", "0"},
                                {"IsScheduledTaskNeeded", "0"},
                                {"UpdaterPrefSchedCheckFreq", "3"}};
  test::fs::create_directories(home / "Library/Preferences");
  const auto agent = home / "Library/LaunchAgents/com.vantre.VantreOrlanUpdater-1.0.plist";
  const std::tuple<const char*, const char*, const char*, bool> rows[] = {
      {nullptr, "1", "0", true},  {"", "1", "0", true},        {"x", "1", "0", false},
      {nullptr, "1", "1", false}, {nullptr, "1", "no", false}, {nullptr, "0", "0", false}};
  for (const auto& [plist, added, needed, forgotten] : rows) {
    const Entries before = {{"IsScheduledTaskAdded", added}, {"IsScheduledTaskNeeded", needed}};
    SCOPED_TRACE(std::string("agent: ") + (plist == nullptr ? "none" : plist) +
                 ", added: " + added + ", needed: " + needed);
    test::fs::remove(agent);
    if (plist != nullptr) WriteFile(agent, plist);
    ExpectLoaded(before, forgotten ? without_task : before);
  }
}

TEST_F(UpdaterPrefs, NeedAFolderAndSayWhenTheInventoryIsMissing) {
  for (const auto& no_folder : {home / "Library", root / "tmp"}) {
    test::fs::remove_all(no_folder);
    WriteFile(no_folder, "");
  }
  test::MakeEmptyLog(top / "log");
  test::ExpectInChild([&] {
    esd::InitUpdaterLog(top / "log", 2, "", "", "");
    try {
      VantreUpdaterPrefs::GetInstance(false);
      ADD_FAILURE() << "preferences were made without a folder";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "Unable to create file!");
    }
    EXPECT_TRUE(wakerly::SetUpStartupLogging());
    EXPECT_FALSE(wakerly::IsScheduledCheckWindowElapsed());
    esd::SetUpdaterPrefsFolderOverride(top / "missing");
    EXPECT_FALSE(VantreUpdaterPrefs::GetInstance(false).GetLogLevelPref().Set(3));
  });
  EXPECT_EQ(test::Messages(test::ReadLines(top / "log")).back(),
            "Could not get Updater Inventory path on machine ");
}

}  // namespace
