#include <gmock/gmock.h>

#include "esd/prefs/resource_locker.h"
#include "tests/run_support.h"

namespace test {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kBanner = ">>> Vantre Updater Log Begin >>>";
constexpr const char* kVersion = "Application Version: " WAKERLY_VERSION;
constexpr const char* kScheduled = "Wakerly : Loaded in scheduled mode.";
constexpr const char* kLogon = "Wakerly : Loaded at startup/logon.";
constexpr const char* kElapsed = "Wakerly : Window is Elapsed and going to launch Tarnik.";
constexpr const char* kNotElapsed = "Wakerly : Window is NOT Elapsed.";
constexpr const char* kNotEnabled = "Wakerly : WARNING - Updater is NOT enabled.";
constexpr const char* kCalling = "Wakerly: Calling LaunchExecutable for exe ";
const Lines kMode = {"-mode=scheduled"};
const std::string kLauncher = "VantreUpdaterKodoLauncher : ";

const std::string kDuePrefs = PrefsText({{"LastDateCheck", "2001-02-03T04:05:06"}});
// A date in the future counts as today.
const std::string kNotDuePrefs = PrefsText({{"LastDateCheck", "2999-01-01T00:00:00"}});

TEST_F(RunTest, StartsTheNotifierApartFromItself) {
  InstallNotifier();
  EXPECT_EQ(Text(Run(kMode).notifier),
            "started " + notifier.string() +
                ", arguments=0 own_session=yes standard_streams=/dev/null other_files=0\n");
}

struct Decision {
  const char* name;
  Lines arguments = {};
  bool due = false;  // the next check
  bool suppressed = false;
  bool suite = false;
  bool starts = false;  // the notifier
  Lines logged = {};    // what begins with the program's name, without values
};

// GoogleTest would print the bytes.
void PrintTo(const Decision& decision, std::ostream* out) { *out << decision.name; }

class RunDecision : public RunTest, public testing::WithParamInterface<Decision> {};

TEST_P(RunDecision, StartsTheNotifierOrNotAndAlwaysDrivesTheClientLibrary) {
  const Decision& decision = GetParam();
  InstallNotifier();
  InstallLibrary();
  WriteFile(prefs, decision.due ? kDuePrefs : kNotDuePrefs);
  if (decision.suppressed) WriteFile(admin_prefs, PrefsText({{"Suppressed", "1"}}));
  if (decision.suite) fs::create_directories(suite);
  const Outcome outcome = Run(decision.arguments);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(!outcome.notifier.empty(), decision.starts) << "does the notifier start?";
  EXPECT_THAT(outcome.library, Contains("release"));
  Lines logged;
  for (const std::string& message : Messages(outcome.log)) {
    if (message.starts_with("Wakerly")) logged.push_back(message.substr(0, message.find(" = ")));
  }
  EXPECT_EQ(Text(logged), Text(decision.logged));
}

// The README's table, then what does not count for it, then what is no scheduled mode.
const Decision kDecisions[] = {
    {.name = "LogonNotDue", .logged = {kLogon, kNotElapsed}},
    {.name = "LogonDue", .due = true, .starts = true, .logged = {kLogon, kElapsed, kCalling}},
    {.name = "LogonSuite", .due = true, .suite = true, .logged = {kLogon, kElapsed, kCalling}},
    {.name = "Scheduled", .arguments = kMode, .starts = true, .logged = {kScheduled, kCalling}},
    {.name = "ScheduledSuite", .arguments = kMode, .suite = true, .logged = {kScheduled, kCalling}},
    {.name = "LogonSuppressed",
     .due = true,
     .suppressed = true,
     .starts = true,
     .logged = {kLogon, kNotEnabled, kElapsed, kCalling}},
    {.name = "ScheduledFirst",
     .arguments = {"-mode=scheduled", "-x"},
     .starts = true,
     .logged = {kScheduled, kCalling}},
    {.name = "ScheduledSecond", .arguments = {"-x", kMode[0]}, .logged = {kLogon, kNotElapsed}},
    {.name = "TrailingBlank", .arguments = {"-mode=scheduled "}, .logged = {kLogon, kNotElapsed}},
    {.name = "CapitalM", .arguments = {"-Mode=scheduled"}, .logged = {kLogon, kNotElapsed}},
    {.name = "EmptyArgument", .arguments = {""}, .logged = {kLogon, kNotElapsed}}};

INSTANTIATE_TEST_SUITE_P(Table, RunDecision, testing::ValuesIn(kDecisions),
                         [](const auto& test) { return test.param.name; });

TEST_F(RunTest, EndsWithStatusOneWhenTheNotifierPathCannotBeFound) {
  const Outcome outcome = Run(kMode);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(Messages(outcome.log).back(),
            "Wakerly Error: Unable to get the Orlan Update Notifier executable path.");
  EXPECT_FALSE(fs::exists(support));
}

TEST_F(RunTest, SaysNothingWhenTheNotifierCannotBeStarted) {
  InstallLibrary();
  const Lines missing = Messages(Run(kMode).log);
  WriteFile(log, "");
  WriteFile(notifier, "no program");
  EXPECT_EQ(Text(Messages(Run(kMode).log)), Text(missing));
  EXPECT_EQ(missing.back(), kLauncher + "unloaded kodo library");
}

enum Detail { kNothing, kFirstLines, kOrdinary, kTraces };

// At level 5 the log drops what is traced; at 10 it drops nothing.
TEST_F(RunTest, LogsWhereAndAsMuchAsThePreferencesSay) {
  const fs::path chosen = home / "my logs/start.txt";
  const std::pair<const char*, Detail> levels[] = {
      {"0", kNothing}, {"2 x", kNothing}, {"1", kFirstLines}, {"2", kOrdinary},
      {"3", kTraces},  {"5", kOrdinary},  {"10", kTraces}};
  fs::create_directories(support);
  for (const auto& [level, detail] : levels) {
    SCOPED_TRACE(std::string("LogLevel ") + level);
    MakeEmptyLog(chosen);
    const std::string text = PrefsText({{"LastDateCheck", "2001-02-03T04:05:06"},
                                        {"LogLevel", level},
                                        {"StartupLogFile", chosen.string()}});
    WriteFile(prefs, text);
    Run();
    EXPECT_EQ(ReadFile(prefs), text);
    const std::pair<Detail, std::string> run[] = {
        {kFirstLines, kBanner},
        {kFirstLines, kVersion},
        {kOrdinary, "cmdline option: -logFile = " + chosen.string()},
        {kOrdinary, std::string("cmdline option: -logLevel = ") + level},
        {kOrdinary, kLogon},
        {kTraces, "UpdaterWakerly: Stepped into << CheckIfUpdaterIsEnabled >> call."},
        {kOrdinary, "UCIsUpdaterEnabled : UpdaterIsEnabled."},
        {kTraces,
         "UpdaterWakerly : Returning from << CheckIfUpdaterIsEnabled >> call with return value -  "
         "= 1"},
        {kOrdinary, "Scheduled check window has elapsed "},
        {kOrdinary, kElapsed},
        {kOrdinary, kCalling + (" = " + notifier.string())},
        {kOrdinary, kLauncher + "inside initialize."},
        {kOrdinary, kLauncher + "Unable to load kodo library from path  = " + library.string()},
        {kOrdinary, kLauncher + "Error encountered in Kodo WorkFlow = std::exception"}};
    Lines expected;
    for (const auto& [needed, message] : run) {
      if (detail < needed) continue;
      expected.push_back(LogLine(message, needed == kTraces ? "DEBUG" : "INFO"));
    }
    EXPECT_EQ(Text(LinesAfterHeader(ReadLog(chosen))), Text(expected));
  }
}

TEST_F(RunTest, LogsAtLevelOneItsFirstLinesWhateverComes) {
  const struct {
    const char* last_check = "2001-02-03T04:05:06";
    const char* frequency = "0";
    const char* suppressed = "0";
    bool folder = true;
  } situations[] = {{.last_check = ""},  {.last_check = "2999-01-01T00:00:00"},
                    {.frequency = "3"},  {.last_check = "2001-02-03Tno time"},
                    {.suppressed = "1"}, {.suppressed = "neither yes nor no"},
                    {.folder = false}};
  for (const auto& [last_check, frequency, suppressed, folder] : situations) {
    SCOPED_TRACE(std::string("last check ") + last_check + ", frequency " + frequency +
                 ", suppressed " + suppressed + (folder ? "" : ", no application support folder"));
    WriteFile(log, "");
    WriteFile(prefs, PrefsText({{"LastDateCheck", last_check},
                                {"UpdaterPrefSchedCheckFreq", frequency},
                                {"LogLevel", "1"}}));
    WriteFile(admin_prefs, PrefsText({{"Suppressed", suppressed}}));
    if (!folder) fs::remove_all(support);
    EXPECT_EQ(Text(LinesAfterHeader(Run().log)), Text({LogLine(kBanner), LogLine(kVersion)}));
  }
}

TEST_F(RunTest, AddsToTheLogWithoutAnotherHeader) {
  Lines expected = Run(kMode).log;
  const Lines added = LinesAfterHeader(expected);
  EXPECT_EQ(Messages({expected.begin(), expected.end() - std::ssize(added)}), HeaderMessages());
  expected.insert(expected.end(), added.begin(), added.end());
  EXPECT_EQ(Text(Run(kMode).log), Text(expected));
}

TEST_F(RunTest, ForgetsThePreferencesOfAnUninstalledUpdater) {
  InstallNotifier();
  InstallLibrary();
  WriteFile(prefs, kDuePrefs);
  WriteFile(inventory / "uninstallts", "stamp-2 more\n");
  const Outcome outcome = Run();
  EXPECT_THAT(outcome.notifier, IsEmpty()) << "the date of the last check is not forgotten";
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
  const Outcome outcome = Run(kMode);
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
    SCOPED_TRACE(folder);
    fs::create_directories(log);  // a folder where the log belongs
    const Outcome outcome = Run(kMode, {{"HOME", folder}, {"TMPDIR", "/dev/null"}});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.library, Contains("release"));
  }
}

}  // namespace
}  // namespace test
