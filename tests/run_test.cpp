#include <gmock/gmock.h>

#include <ctime>
#include <optional>
#include <regex>

#include "esd/prefs/resource_locker.h"
#include "tests/run_support.h"

namespace test {
namespace {

using testing::Contains;
using testing::EndsWith;

constexpr const char* kScheduled = "Wakerly : Loaded in scheduled mode.";
constexpr const char* kLogon = "Wakerly : Loaded at startup/logon.";
constexpr const char* kElapsed = "Wakerly : Window is Elapsed and going to launch Tarnik.";
constexpr const char* kNotElapsed = "Wakerly : Window is NOT Elapsed.";
constexpr const char* kNotEnabled = "Wakerly : WARNING - Updater is NOT enabled.";
constexpr const char* kCalling = "Wakerly: Calling LaunchExecutable for exe ";
constexpr const char* kEnabled = "UCIsUpdaterEnabled : UpdaterIsEnabled.";
const Lines kMode = {"-mode=scheduled"};
const std::string kLauncher = "VantreUpdaterKodoLauncher : ";

TEST_F(RunTest, StartsTheNotifierApartFromItself) {
  InstallNotifier();
  EXPECT_EQ(Text(Run(kMode).notifier),
            "started " + notifier.string() +
                ", arguments=0 own_session=yes standard_streams=/dev/null other_files=0\n");
}

TEST_F(RunTest, StartsTheNotifierOrNotAndAlwaysDrivesTheClientLibrary) {
  const struct {
    const char* name;
    Lines args = {};
    bool due = false, suppressed = false, suite = false;
    bool starts = false;  // the notifier
    Lines logged = {};    // what begins with the program's name, without values
  } rows[] = {
      {.name = "not due", .logged = {kLogon, kNotElapsed}},
      {.name = "due", .due = true, .starts = true, .logged = {kLogon, kElapsed, kCalling}},
      {.name = "suite", .due = true, .suite = true, .logged = {kLogon, kElapsed, kCalling}},
      {.name = "suppressed",
       .due = true,
       .suppressed = true,
       .starts = true,
       .logged = {kLogon, kNotEnabled, kElapsed, kCalling}},
      {.name = "first", .args = {kMode[0], "-x"}, .starts = true, .logged = {kScheduled, kCalling}},
      {.name = "second", .args = {"-x", kMode[0]}, .logged = {kLogon, kNotElapsed}},
      {.name = "blank", .args = {"-mode=scheduled "}, .logged = {kLogon, kNotElapsed}},
      {.name = "capital", .args = {"-Mode=scheduled"}, .logged = {kLogon, kNotElapsed}},
  };
  InstallNotifier();
  InstallLibrary();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    WriteFile(log, "");
    // A date in the future counts as today.
    const std::string date = row.due ? "2001-02-03T04:05:06" : "2999-01-01T00:00:00";
    WriteFile(prefs, PrefsText({{"LastDateCheck", date}}));
    WriteFile(admin_prefs, PrefsText({{"Suppressed", row.suppressed ? "1" : "0"}}));
    row.suite ? fs::create_directories(suite) : fs::remove(suite);
    const Outcome outcome = Run(row.args);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(!outcome.notifier.empty(), row.starts) << "does the notifier start?";
    EXPECT_THAT(outcome.library, Contains("release"));
    Lines logged;
    for (const std::string& message : Messages(outcome.log)) {
      if (message.starts_with("Wakerly")) logged.push_back(message.substr(0, message.find(" = ")));
    }
    EXPECT_EQ(Text(logged), Text(row.logged));
  }
}

TEST_F(RunTest, EndsWithStatusOneWhenTheNotifierPathCannotBeFound) {
  const Outcome outcome = Run(kMode);
  EXPECT_EQ(outcome.status, 1);
  const char* const error =
      "Wakerly Error: Unable to get the Orlan Update Notifier executable path.";
  EXPECT_THAT(Text(Messages(outcome.log)), EndsWith(Text({kScheduled, kNotEnabled, error})));
  EXPECT_FALSE(fs::exists(support));
  WriteFile(log, "");
  WriteFile(prefs, PrefsText({{"LogLevel", "1"}}));
  EXPECT_EQ(Text(LinesAfterHeader(Run(kMode).log)), Text(FirstLines())) << "at LogLevel 1";
}

TEST_F(RunTest, SaysNothingWhenTheNotifierCannotBeStarted) {
  InstallLibrary();
  const Lines missing = Messages(Run(kMode).log);
  WriteFile(log, "");
  WriteFile(notifier, "no program");
  EXPECT_EQ(Text(Messages(Run(kMode).log)), Text(missing));
  EXPECT_THAT(missing, Contains(kLauncher + "unloaded kodo library"));
}

TEST_F(RunTest, LogsWhereAndAsMuchAsThePreferencesSay) {
  const fs::path chosen = home / "my logs/start.txt";
  Lines all = FirstLines();
  const Lines messages = {
      "cmdline option: -logFile = " + chosen.string(),
      "cmdline option: -logLevel = 3",
      kLogon,
      "UpdaterWakerly: Stepped into << CheckIfUpdaterIsEnabled >> call.",
      kEnabled,
      "UpdaterWakerly : Returning from << CheckIfUpdaterIsEnabled >> call with return value -  = 1",
      "Scheduled check window has elapsed ",
      kElapsed,
      kCalling + (" = " + notifier.string()),
      kLauncher + "inside initialize.",
      kLauncher + "Unable to load kodo library from path  = " + library.string(),
      kLauncher + "Error encountered in Kodo WorkFlow = std::exception"};
  for (const std::string& message : messages) {
    all.push_back(LogLine(message, message.starts_with("UpdaterWakerly") ? "DEBUG" : "INFO"));
  }
  fs::create_directories(support);
  for (const auto& [level, expected] : {std::pair("3", all), {"0", {}}, {"2 x", {}}}) {
    SCOPED_TRACE(std::string("LogLevel ") + level);
    MakeEmptyLog(chosen);
    const std::string text = PrefsText({{"LastDateCheck", "2001-02-03T04:05:06"},
                                        {"LogLevel", level},
                                        {"StartupLogFile", chosen.string()}});
    WriteFile(prefs, text);
    Run();
    EXPECT_EQ(ReadFile(prefs), text);
    EXPECT_EQ(Text(LinesAfterHeader(ReadLog(chosen))), Text(expected));
  }
}

class CheckTest : public RunTest {
 protected:
  CheckTest() { fs::create_directories(support); }

  std::string Prefs(const std::string& last_check, const std::string& frequency, int level) const {
    return PrefsText({{"LastDateCheck", last_check},
                      {"UpdaterPrefSchedCheckFreq", frequency},
                      {"StartupLogFile", log.string()},
                      {"LogLevel", std::to_string(level)}});
  }

  // What the checks say in a run at LogLevel 2. At LogLevel 1 they say nothing.
  std::string Said(const std::string& last_check, const std::string& frequency) const {
    const auto run = [&](int level) {
      WriteFile(log, "");
      WriteFile(prefs, Prefs(last_check, frequency, level));
      return LinesAfterHeader(Run().log);
    };
    EXPECT_EQ(Text(run(1)), Text(FirstLines())) << "at LogLevel 1";
    Lines messages = Messages(run(2));
    const std::regex others("(>>>|Application|cmdline|Vantre|Wakerly : (Load|Window)|Wakerly:).*");
    std::erase_if(messages, [&](const auto& message) { return std::regex_match(message, others); });
    return Text(messages);
  }
};

// The check reads and reports, and never changes the administrator's file.
TEST_F(CheckTest, UpdaterIsEnabledUnlessSuppressedOrNobodyCanTell) {
  const auto text = [](const char* value) { return PrefsText({{"Suppressed", value}}); };
  const std::string suppressed = "CheckIfUpdaterIsEnabled : UpdaterIsNotEnabled.";
  const std::string failed =
      "Error: CheckIfUpdaterIsEnabled - Failed to get admin preferences for updater suppression";
  const struct {
    const char* name;
    std::optional<std::string> file;  // the administrator's preferences
    Lines said;
    bool is_locked = false;
  } rows[] = {{"no file", std::nullopt, {kEnabled}},
              {"empty file", "", {kEnabled}},
              {"Suppressed 1", text("1"), {suppressed, kNotEnabled}},
              {"Suppressed yes", text("yes"), {failed, kNotEnabled}},
              {"not XML", text("<"), {kEnabled}},
              {"locked file", text("0"), {failed, kNotEnabled}, true}};
  for (const auto& [name, file, said, is_locked] : rows) {
    SCOPED_TRACE(name);
    fs::remove(admin_prefs);
    if (file) WriteFile(admin_prefs, *file);
    esd::ResourceLocker other_process(admin_prefs.string(), 0);
    ASSERT_TRUE(!is_locked || other_process.Lock());
    EXPECT_EQ(Said("", "0"), Text(said) + "Updater has never been run on the machine.\n");
    EXPECT_EQ(fs::exists(admin_prefs), file.has_value()) << "is there a file now?";
    EXPECT_EQ(ReadFile(admin_prefs), file.value_or(""));
  }
}

// The local date so many days from now.
std::string Date(int days) {
  const std::time_t then = std::time(nullptr) + days * std::time_t(24 * 60 * 60);
  char text[sizeof "2021-04-30"];
  std::strftime(text, sizeof text, "%F", std::localtime(&then));
  return text;
}

// At least one of the zones has another date than Greenwich.
TEST_F(CheckTest, WindowElapsesByTheLocalDateAndReplacesADateAhead) {
  const std::string due = "Scheduled check window has elapsed \n";
  const std::string not_due = "Scheduled check window has not yet elapsed \n";
  const struct {
    int days;  // from now to the last check
    const char *time, *frequency;
    std::string said;
  } rows[] = {{-1, "T23:59:59", "0", due},
              {0, "T00:00:00", "0", not_due},
              {1, "T::", "0", not_due},
              {0, "T1:2", "0", "Invalid Time 1:2\n" + due},
              {-99, "T::", "daily", not_due},
              {-99, "T::", "3",
               "Scheduled check frequency has been set to never. No need to run updater.\n"}};
  for (const char* zone : {"EAST-14", "WEST+12"}) {
    setenv("TZ", zone, 1);
    tzset();
    for (const auto& [days, time, frequency, said] : rows) {
      const std::string last_check = Date(days) + time;
      SCOPED_TRACE("today " + Date(0) + ", last check " + last_check + ", frequency " + frequency);
      EXPECT_EQ(Said(last_check, frequency), Text({kEnabled}) + said);
      EXPECT_EQ(ReadFile(prefs), Prefs(days > 0 ? Date(0) : last_check, frequency, 2));
    }
  }
}

}  // namespace
}  // namespace test
