#include <gmock/gmock.h>

#include <algorithm>
#include <ctime>

#include "esd/prefs/resource_locker.h"
#include "tests/run_support.h"

namespace test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kScheduled = "Wakerly : Loaded in scheduled mode.";
constexpr const char* kLogon = "Wakerly : Loaded at startup/logon.";
constexpr const char* kElapsed = "Wakerly : Window is Elapsed and going to launch Tarnik.";
constexpr const char* kNotElapsed = "Wakerly : Window is NOT Elapsed.";
constexpr const char* kNotEnabled = "Wakerly : WARNING - Updater is NOT enabled.";

const std::string kDuePrefs = PrefsText({{"LastDateCheck", "2001-02-03T04:05:06"}});

// A week has not passed since a check today, also when midnight passes meanwhile.
std::string NotDuePrefs() {
  const std::time_t now = std::time(nullptr);
  char today[32];
  std::strftime(today, sizeof today, "%Y-%m-%dT%H:%M:%S", std::localtime(&now));
  return PrefsText({{"LastDateCheck", today}, {"UpdaterPrefSchedCheckFreq", "1"}});
}

TEST_F(RunTest, WritesTheLogLineByLine) {
  InstallNotifier();
  InstallLibrary();
  WriteFile(prefs, kDuePrefs);
  const std::string prefix = "VantreUpdaterKodoLauncher : ";
  const std::vector<std::string> run = {
      ">>> Vantre Updater Log Begin >>>",
      "Application Version: " WAKERLY_VERSION,
      "cmdline option: -logFile = " + log.string(),
      "cmdline option: -logLevel = 2",
      kLogon,
      "UCIsUpdaterEnabled : UpdaterIsEnabled.",
      "Scheduled check window has elapsed ",
      kElapsed,
      "Wakerly: Calling LaunchExecutable for exe  = " + notifier.string(),
      prefix + "inside initialize.",
      prefix + "inside getLatestKDApplication.",
      prefix + "inside waitForCFUCallBack.",
      prefix + "VantreKD_CFUCallbackFn is invoked",
      prefix + "inside invokeKDApplication.",
      prefix + "VantreKD_ReleaseRef called.",
      prefix + "inside finalize.",
      prefix + "unloaded kodo library"};
  std::vector<std::string> expected = HeaderMessages();
  // The second run adds to the log without another header.
  for (int i = 0; i < 2; ++i) expected.insert(expected.end(), run.begin(), run.end());
  for (std::string& line : expected) {
    line.insert(0, "TIME | [INFO] |  | UPDATER | WAKERLY |  |  |  | TID | ");
  }
  EXPECT_THAT(
      Run().notifier,
      ElementsAre("started " + notifier.string() +
                  ", arguments=0 own_session=yes standard_streams=/dev/null other_files=0"));
  EXPECT_EQ(Run().log, expected);
}

struct Decision {
  const char* name;
  std::vector<std::string> arguments;
  bool due;
  bool enabled;
  bool suite_present;
  bool scheduled;
  bool launched;
};

// GoogleTest would print the bytes.
void PrintTo(const Decision& decision, std::ostream* out) { *out << decision.name; }

class RunDecision : public RunTest, public testing::WithParamInterface<Decision> {};

TEST_P(RunDecision, StartsTheNotifierOrNotAndAlwaysTheClientLibrary) {
  const auto& [name, arguments, due, enabled, suite_present, scheduled, launched] = GetParam();
  InstallNotifier();
  InstallLibrary();
  WriteFile(prefs, due ? kDuePrefs : NotDuePrefs());
  if (!enabled) WriteFile(admin_prefs, PrefsText({{"Suppressed", "1"}}));
  if (suite_present) InstallSuite();
  const Outcome outcome = Run(arguments);
  EXPECT_EQ(outcome.status, 0);
  const std::vector<std::string> messages = Messages(outcome.log);
  // Also where the suite takes the launch over.
  const std::string calling = "Wakerly: Calling LaunchExecutable for exe  = " + notifier.string();
  const std::pair<const char*, bool> table[] = {
      {kScheduled, scheduled},       {kLogon, !scheduled},
      {kElapsed, !scheduled && due}, {kNotElapsed, !scheduled && !due},
      {kNotEnabled, !enabled},       {calling.c_str(), scheduled || due}};
  for (const auto& [message, expected] : table) {
    EXPECT_EQ(std::count(messages.begin(), messages.end(), message), expected) << message;
  }
  EXPECT_THAT(outcome.notifier, SizeIs(launched ? 1 : 0));
  EXPECT_THAT(outcome.library, Contains("release"));
}

INSTANTIATE_TEST_SUITE_P(
    Table, RunDecision,
    testing::Values(
        Decision{"LogonNotDue", {}, false, true, false, false, false},
        Decision{"LogonDue", {}, true, true, false, false, true},
        Decision{"LogonDueSuppressed", {}, true, false, false, false, true},
        Decision{"LogonDueWithSuite", {}, true, true, true, false, false},
        Decision{"Scheduled", {"-mode=scheduled"}, true, true, false, true, true},
        Decision{"ScheduledNotDueSuppressed", {"-mode=scheduled"}, false, false, false, true, true},
        Decision{"ScheduledWithSuite", {"-mode=scheduled"}, true, true, true, true, false},
        Decision{"ScheduledFirst", {"-mode=scheduled", "-x"}, false, true, false, true, true},
        Decision{"ScheduledSecond", {"-x", "-mode=scheduled"}, false, true, false, false, false},
        Decision{"TrailingBlank", {"-mode=scheduled "}, false, true, false, false, false},
        Decision{"CapitalM", {"-Mode=scheduled"}, false, true, false, false, false},
        Decision{"EmptyArgument", {""}, true, true, false, false, true}),
    [](const auto& test) { return test.param.name; });

TEST_F(RunTest, EndsWithStatusOneWhenTheNotifierPathCannotBeFound) {
  const Outcome outcome = Run({"-mode=scheduled"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(Messages(outcome.log).back(),
            "Wakerly Error: Unable to get the Orlan Update Notifier executable path.");
  EXPECT_FALSE(fs::exists(support));
}

TEST_F(RunTest, SaysNothingWhenTheNotifierCannotBeStarted) {
  InstallLibrary();
  const std::vector<std::string> missing = Messages(Run({"-mode=scheduled"}).log);
  WriteFile(log, "");
  WriteFile(notifier, "no program");
  EXPECT_EQ(Messages(Run({"-mode=scheduled"}).log), missing);
  EXPECT_EQ(missing.back(), "VantreUpdaterKodoLauncher : unloaded kodo library");
}

struct Setting {
  const char* name;
  const char* level;
  std::size_t lines;  // on top of the header
};

void PrintTo(const Setting& setting, std::ostream* out) { *out << setting.name; }

class RunLogLevel : public RunTest, public testing::WithParamInterface<Setting> {};

TEST_P(RunLogLevel, LogsWhereAndAsMuchAsThePreferencesSay) {
  fs::create_directories(support);
  const fs::path chosen = home / "my logs/start.txt";
  fs::create_directories(chosen.parent_path());
  const std::string text =
      PrefsText({{"LogLevel", GetParam().level}, {"StartupLogFile", chosen.string()}});
  WriteFile(prefs, text);
  EXPECT_EQ(Run({"-mode=scheduled"}).status, 0);
  EXPECT_THAT(ReadLines(chosen),
              SizeIs(GetParam().lines == 0 ? 0 : HeaderMessages().size() + GetParam().lines));
  EXPECT_EQ(ReadFile(prefs), text);
}

INSTANTIATE_TEST_SUITE_P(Table, RunLogLevel,
                         testing::Values(Setting{"Off", "0", 0}, Setting{"NoNumber", "2 x", 0},
                                         Setting{"BannerAndVersion", "1", 2},
                                         Setting{"Ordinary", "2", 10}, Setting{"Traces", "3", 12}),
                         [](const auto& test) { return test.param.name; });

TEST_F(RunTest, ForgetsThePreferencesOfAnUninstalledUpdater) {
  InstallNotifier();
  InstallLibrary();
  WriteFile(prefs, kDuePrefs);
  WriteFile(inventory / "uninstallts", "stamp-2 more\n");
  const Outcome outcome = Run();
  EXPECT_THAT(outcome.notifier, IsEmpty());  // the date of the last check is gone
  EXPECT_EQ(
      ReadFile(prefs),
      PrefsText({{"uninstallts", "stamp-2"}, {"StartupLogFile", log.string()}, {"LogLevel", "2"}}));
}

TEST_F(RunTest, RunsWithoutALogWhileAnotherProcessHoldsThePreferences) {
  InstallNotifier();
  InstallLibrary();
  WriteFile(prefs, kDuePrefs);
  esd::ResourceLocker locker(prefs.string(), 0);
  ASSERT_TRUE(locker.Lock());
  const Outcome outcome = Run({"-mode=scheduled"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(ReadFile(log), "");
  EXPECT_EQ(ReadFile(prefs), kDuePrefs);
  EXPECT_THAT(outcome.notifier, SizeIs(1));
  EXPECT_THAT(outcome.library, Contains("release"));
}

TEST_F(RunTest, DoesItsWorkWithoutAHomeFolderOrALog) {
  InstallNotifier();
  InstallLibrary();
  fs::remove(log);
  for (const char* folder : {"/dev/null", home.c_str()}) {
    fs::create_directories(log);  // a folder where the log belongs
    const Outcome outcome = Run({"-mode=scheduled"}, {{"HOME", folder}, {"TMPDIR", "/dev/null"}});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.library, Contains("release"));
  }
}

}  // namespace
}  // namespace test
