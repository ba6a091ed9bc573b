#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>

#include "launcher/kodo_launcher.h"
#include "launcher/platform_mutex.h"
#include "tests/run_support.h"

namespace test {
namespace {

using testing::ElementsAreArray;

constexpr const char* kLatest =
    "latest record=4 name=MondoUpdater version=" WAKERLY_VERSION " reserved=0";
constexpr const char* kInvoke = "invoke record=4 name=MondoUpdater reserved=0";
constexpr const char* kEnded = "Error encountered in Kodo WorkFlow = std::exception";
constexpr const char* kUnknown = "Unknown Error encountered in Kodo WorkFlow ";
const std::string kThrown = "Error encountered in Kodo WorkFlow = thrown by ";

// The launcher's lines of a log, less what all of them begin with.
Lines LauncherMessages(const Lines& log) {
  const std::string tag = "VantreUpdaterKodoLauncher : ";
  Lines messages;
  for (const std::string& message : Messages(log)) {
    if (message.starts_with(tag)) messages.push_back(message.substr(tag.size()));
  }
  return messages;
}

struct Workflow {
  const char* name;
  std::map<std::string, std::string> settings;
  Lines logged;
  Lines called;
};

// GoogleTest would print the bytes.
void PrintTo(const Workflow& workflow, std::ostream* out) { *out << workflow.name; }

class WorkflowTest : public RunTest, public testing::WithParamInterface<Workflow> {};

TEST_P(WorkflowTest, LogsAndCalls) {
  InstallLibrary();
  const Outcome outcome = Run({"-mode=scheduled"}, GetParam().settings);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(LauncherMessages(outcome.log), ElementsAreArray(GetParam().logged));
  EXPECT_THAT(outcome.library, ElementsAreArray(GetParam().called));
}

const Lines kAsked = {"inside initialize.", "inside getLatestKDApplication."};
const Lines kAnswered = {"inside initialize.", "inside getLatestKDApplication.",
                         "inside waitForCFUCallBack.", "VantreKD_CFUCallbackFn is invoked"};
const Lines kDone = {"inside invokeKDApplication.", "VantreKD_ReleaseRef called.",
                     "inside finalize.", "unloaded kodo library"};

Lines operator+(Lines first, const Lines& second) {
  std::copy(second.begin(), second.end(), std::back_inserter(first));
  return first;
}

const Lines kCalls = {"loaded", kLatest, "callback code=0", kInvoke, "release", "unloaded"};

INSTANTIATE_TEST_SUITE_P(
    Table, WorkflowTest,
    testing::Values(
        Workflow{"CallbackBeforeTheWait", {}, kAnswered + kDone, kCalls},
        Workflow{"CallbackDuringTheWait",
                 {{"KDUPDATER_CALLBACK", "thread"}, {"KDUPDATER_CALLBACK_DELAY_MS", "300"}},
                 kAnswered + kDone,
                 kCalls},
        Workflow{"CallbackTwiceBeforeTheWait",
                 {{"KDUPDATER_CALLBACK", "request,request"},
                  {"KDUPDATER_CALLBACK_CODE", "0,0xFFFFFFFF"}},
                 kAnswered + Lines{"VantreKD_CFUCallbackFn returned error code  = -1", kEnded},
                 {"loaded", kLatest, "callback code=0", "callback code=4294967295", "unloaded"}},
        Workflow{
            "CallbackAgainAfterTheWait",
            {{"KDUPDATER_CALLBACK", "request,release,unload"}, {"KDUPDATER_CALLBACK_CODE", "0,1"}},
            kAnswered + kDone,
            {"loaded", kLatest, "callback code=0", kInvoke, "release", "callback code=1",
             "callback code=1", "unloaded"}},
        Workflow{
            "CallbackAfterTheLauncherIsGone",
            {{"KDUPDATER_CALLBACK", "request,unload"}, {"KDUPDATER_CALLBACK_CODE", "0x7FFFFFFF,1"}},
            kAnswered + Lines{"VantreKD_CFUCallbackFn returned error code  = 2147483647", kEnded},
            {"loaded", kLatest, "callback code=2147483647", "callback code=1", "unloaded"}},
        Workflow{"RequestAnsweredWithZero",
                 {{"KDUPDATER_LATEST_RESULT", "0"}},
                 kAsked + Lines{"VantreKD_GetLatestKDApplication returned error code  = 0", kEnded},
                 {"loaded", kLatest, "unloaded"}},
        Workflow{"RequestThrowsAndTheCallbackComesLate",
                 {{"KDUPDATER_THROWS", "latest:exception"},
                  {"KDUPDATER_CALLBACK", "thread"},
                  {"KDUPDATER_CALLBACK_DELAY_MS", "300"}},
                 kAsked + Lines{kThrown + "latest"},
                 {"loaded", kLatest, "callback code=0", "unloaded"}},
        Workflow{"RequestThrowsSomethingElse",
                 {{"KDUPDATER_THROWS", "latest:other"}},
                 kAsked + Lines{kUnknown},
                 {"loaded", kLatest, "callback code=0", "unloaded"}},
        Workflow{"InvokeFails",
                 {{"KDUPDATER_INVOKE_RESULT", "0xFFFFFFFF"}},
                 kAnswered +
                     Lines{kDone[0], "VantreKD_InvokeApplication returned error code  = -1"} +
                     Lines(kDone.begin() + 1, kDone.end()),
                 kCalls},
        Workflow{"InvokeThrows",
                 {{"KDUPDATER_THROWS", "invoke:exception"}},
                 kAnswered + Lines{kDone[0], kThrown + "invoke"},
                 {"loaded", kLatest, "callback code=0", kInvoke, "unloaded"}},
        Workflow{"InvokeThrowsAnExceptionWithoutAText",
                 {{"KDUPDATER_THROWS", "invoke:mute"}},
                 kAnswered + Lines{kDone[0], "Error encountered in Kodo WorkFlow = "},
                 {"loaded", kLatest, "callback code=0", kInvoke, "unloaded"}},
        Workflow{"InvokeThrowsSomethingElse",
                 {{"KDUPDATER_THROWS", "invoke:other"}},
                 kAnswered + Lines{kDone[0], kUnknown},
                 {"loaded", kLatest, "callback code=0", kInvoke, "unloaded"}},
        Workflow{"ReleaseThrows",
                 {{"KDUPDATER_THROWS", "release:exception"}},
                 kAnswered + Lines{kDone[0], kDone[1], kThrown + "release"},
                 kCalls},
        Workflow{"ReleaseThrowsSomethingElse",
                 {{"KDUPDATER_THROWS", "release:other"}},
                 kAnswered + Lines{kDone[0], kDone[1], kUnknown},
                 kCalls}),
    [](const auto& test) { return test.param.name; });

// The log's path is relative, the home folder is closed to other users, and the client library
// meddles before most of the lines are written.
TEST_F(RunTest, EndsTheWorkflowAsEverWhateverTheLibraryMeddlesWith) {
  InstallLibrary();
  fs::current_path(top);
  WriteFile(prefs, PrefsText({{"StartupLogFile", "logs/run.log"}, {"LogLevel", "2"}}));
  WriteFile(top / "foreign.source",
            "LC_TIME\nd_fmt \"%Y-%m-%d\"\nt_fmt \"%H.%M.%S\"\nEND LC_TIME\n"
            "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\nEND LC_NUMERIC\n");
  // The status says only that other categories are missing.
  [[maybe_unused]] const int ignored =
      std::system("localedef --force --quiet --inputfile=foreign.source ./foreign");
  ASSERT_TRUE(fs::exists("foreign/LC_TIME"));
  setenv("LOCPATH", top.c_str(), 1);
  setenv("LC_ALL", "foreign", 1);
  setenv("KDUPDATER_INVOKE_RESULT", "0x7FFFFFFF", 1);
  Lines undisturbed;
  for (const char* what : {"", "euid", "folder", "locale", "signals", "thread"}) {
    SCOPED_TRACE(what);
    WriteFile("logs/run.log", "");
    WriteFile(top / "library.trace", "");
    // The search for leaks fails in a process of two users.
    const Outcome outcome =
        Run({"-mode=scheduled"}, {{"KDUPDATER_MEDDLES", what}, {"LSAN_OPTIONS", "detect_leaks=0"}});
    const Lines lines = ReadLog("logs/run.log");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.library, kCalls);
    EXPECT_THAT(LauncherMessages(lines), testing::IsSupersetOf(kAnswered + kDone));
    if (undisturbed.empty()) undisturbed = lines;
    EXPECT_EQ(lines, undisturbed);
  }
}

TEST_F(RunTest, EndsTheWorkflowWhenTheLibraryIsMissingOrIsNone) {
  const Lines expected = {"inside initialize.",
                          "Unable to load kodo library from path  = " + library.string(), kEnded};
  fs::create_directories(library.parent_path());
  const std::function<void()> lay[] = {[] {}, [&] { WriteFile(library, "no library"); },
                                       [&] { mkfifo(library.c_str(), 0600); }};
  for (const auto& something : lay) {
    WriteFile(log, "");
    fs::remove(library);
    something();
    const Outcome outcome = Run({"-mode=scheduled"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(LauncherMessages(outcome.log), expected);
  }
}

TEST_F(RunTest, EndsTheWorkflowAtTheFirstEntryPointThatIsMissing) {
  InstallLibrary();
  for (const std::string symbol : {"Vantre_KD_ReleaseRef", "Vantre_KD_InvokeApplication",
                                   "Vantre_KD_GetLatestKDApplication"}) {
    // Another name in the library's symbol table; the earlier ones stay renamed.
    std::string bytes = ReadFile(library);
    for (std::size_t at = 0; (at = bytes.find(symbol, at)) != std::string::npos; ++at) {
      bytes[at] = 'x';
    }
    fs::remove(library);
    WriteFile(log, "");
    WriteFile(library, bytes);
    EXPECT_EQ(
        LauncherMessages(Run({"-mode=scheduled"}).log),
        (Lines{"inside initialize.", "Unable to find the handle to API " + symbol + ".", kEnded}));
  }
}

TEST(Launcher, IgnoresACallbackWithoutAnInstance) {
  VantreKD_CFUCallbackFn(0);
  wakerly::VantreUpdaterKodoLauncher* const instance =
      wakerly::VantreUpdaterKodoLauncher::getInstance();
  EXPECT_EQ(wakerly::VantreUpdaterKodoLauncher::getInstance(), instance);
  wakerly::VantreUpdaterKodoLauncher::destroyInstance();
  wakerly::VantreUpdaterKodoLauncher::destroyInstance();
  VantreKD_CFUCallbackFn(0);
}

TEST(PlatformMutex, IsRecursiveWithAName) {
  wakerly::PlatformMutex named("a name");
  const std::lock_guard<wakerly::PlatformMutex> outer(named);
  const std::lock_guard<wakerly::PlatformMutex> inner(named);
}

}  // namespace
}  // namespace test
