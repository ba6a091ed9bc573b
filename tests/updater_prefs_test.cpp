#include "esd/prefs/updater_prefs.h"

#include <algorithm>

#include "driver/check_window.h"
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
std::string DefaultOf(auto& /*map*/) { return ""; }

TEST_F(UpdaterPrefs, AreListedInTheirDocumentWithTypeAndDefault) {
  const std::string document = ReadFile(PREFERENCES_DOCUMENT);
  const std::map<std::string, std::string> types = {{"BoolPref", "boolean"},
                                                    {"IntPref", "whole number"},
                                                    {"CountPref", "count"},
                                                    {"StringPref", "text"},
                                                    {"BoolMapPref", "map of booleans"},
                                                    {"StringMapPref", "map of texts"}};
  int keys = 0;
  const auto find_key = [&](const char* type, const char* key, std::string value) {
    for (const auto& [folder, name] : Entries{{prefs_folder, "F"}, {home, "~"}}) {
      if (value.starts_with(folder)) value.replace(0, folder.size(), name);
    }
    if (!value.empty()) value = ", `" + value + "`";
    const std::string head = "\n- " + types.at(type) + value + ": `";
    const std::size_t begin = std::min(document.find(head), document.size());
    const std::size_t end = document.find("\n-", begin + 1);
    const std::string found = document.substr(begin, end - begin);
    EXPECT_TRUE(found.find(std::string("`") + key + "`") != std::string::npos)
        << "no " << key << " in the item" << head << "..., which is:" << found;
    ++keys;
  };
  test::ExpectInChild([&] {
    VantreUpdaterPrefs& own = VantreUpdaterPrefs::GetInstance(false);
#define VANTRE_FIND(Type, key, ...) find_key(#Type, #key, DefaultOf(own.Get##key##Pref()));
    VANTRE_UPDATER_PREFS(VANTRE_FIND)
#undef VANTRE_FIND
    EXPECT_TRUE(document.find("Of the " + std::to_string(keys) + " keys") != std::string::npos)
        << "it does not say that there are " << keys;
  });
}

// The first load takes no lock. With one it would remove the file.
TEST_F(UpdaterPrefs, LeaveAMalformedFileAlone) {
  WriteFile(prefs, "<Preferences><LogLevel>4");
  test::ExpectInChild([] { VantreUpdaterPrefs::GetInstance(false).GetLogLevelPref().Set(3); });
  EXPECT_EQ(ReadFile(prefs), "<Preferences><LogLevel>4");
}

TEST_F(UpdaterPrefs, AreWipedWhenTheUninstallStampDiffers) {
  const Entries kept = {{"LogLevel", "4"}, {"uninstallts", "one"}};
  const std::tuple<const char*, const char*, bool, Entries> rows[] = {
      {"the same stamp", "one", false, kept},
      {"a stamp without a word", " \n", false, kept},
      {"a stamp that XML cannot hold", "two\xFF", false, kept},
      {"another stamp while another process holds the lock", "two", true, kept},
      {"the first word of another stamp", "\n two words\n", false, {{"uninstallts", "two"}}}};
  for (const auto& [name, stamp, is_locked, after] : rows) {
    SCOPED_TRACE(name);
    WriteFile(inventory / "uninstallts", stamp);
    esd::ResourceLocker other_process(prefs, 0);
    if (is_locked) other_process.Lock();
    ExpectLoaded(kept, after);
  }
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

TEST_F(UpdaterPrefs, NeedAFolder) {
  setenv("HOME", "/dev/null", 1);
  setenv("WAKERLY_ROOT", "/dev/null", 1);
  test::ExpectInChild([] {
    EXPECT_THROW(VantreUpdaterPrefs::GetInstance(false), std::runtime_error);
    EXPECT_FALSE(wakerly::IsScheduledCheckWindowElapsed());
  });
}

TEST_F(UpdaterPrefs, SayWhenTheInventoryIsMissing) {
  test::ExpectInChild([&] {
    esd::InitUpdaterLog(log, 2, "", "", "");
    VantreUpdaterPrefs::GetInstance(false);
  });
  EXPECT_EQ(test::Messages(test::ReadLines(log)).back(),
            "Could not get Updater Inventory path on machine ");
}

}  // namespace
