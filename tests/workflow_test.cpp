#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>

#include "launcher/kodo_launcher.h"
#include "launcher/platform_mutex.h"
#include "tests/run_support.h"

namespace test {
namespace {

using testing::ElementsAreArray;

using Lines = std::vector<std::string>;

constexpr const char* kLatest =
    "latest record=4 name=MondoUpdater version=" WAKERLY_VERSION " reserved=0";
constexpr const char* kInvoke = "invoke record=4 name=MondoUpdater reserved=0";
constexpr const char* kEnded = "Error encountered in Kodo WorkFlow = std::exception";

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

INSTANTIATE_TEST_SUITE_P(
    Table, WorkflowTest,
    testing::Values(
        Workflow{"CallbackBeforeTheWait",
                 {},
                 kAnswered + kDone,
                 {"loaded", kLatest, "callback code=0", kInvoke, "release", "unloaded"}},
        Workflow{"CallbackDuringTheWait",
                 {{"KDUPDATER_CALLBACK", "thread"}, {"KDUPDATER_CALLBACK_DELAY_MS", "300"}},
                 kAnswered + kDone,
                 {"loaded", kLatest, "callback code=0", kInvoke, "release", "unloaded"}},
        Workflow{"CallbackAgainAfterTheWait",
                 {{"KDUPDATER_CALLBACK_AGAIN", "release"}},
                 kAnswered + kDone,
                 {"loaded", kLatest, "callback code=0", kInvoke, "release", "callback code=0",
                  "unloaded"}},
        Workflow{"CallbackAfterTheLauncherIsGone",
                 {{"KDUPDATER_CALLBACK_AGAIN", "unload"}, {"KDUPDATER_CALLBACK_CODE", "7"}},
                 kAnswered + Lines{"VantreKD_CFUCallbackFn returned error code  = 7", kEnded},
                 {"loaded", kLatest, "callback code=7", "callback code=7", "unloaded"}},
        Workflow{"CallbackWithTheHighestCode",
                 {{"KDUPDATER_CALLBACK_CODE", "0xFFFFFFFF"}},
                 kAnswered + Lines{"VantreKD_CFUCallbackFn returned error code  = -1", kEnded},
                 {"loaded", kLatest, "callback code=4294967295", "unloaded"}},
        Workflow{"RequestAnsweredWithZero",
                 {{"KDUPDATER_LATEST_RESULT", "0"}},
                 kAsked + Lines{"VantreKD_GetLatestKDApplication returned error code  = 0", kEnded},
                 {"loaded", kLatest, "unloaded"}},
        Workflow{"RequestThrowsAnException",
                 {{"KDUPDATER_LATEST_THROWS", "exception"}},
                 kAsked + Lines{"Error encountered in Kodo WorkFlow = no latest application"},
                 {"loaded", kLatest, "unloaded"}},
        Workflow{"RequestThrowsSomethingElse",
                 {{"KDUPDATER_LATEST_THROWS", "other"}},
                 kAsked + Lines{"Unknown Error encountered in Kodo WorkFlow "},
                 {"loaded", kLatest, "unloaded"}},
        Workflow{"InvokeFails",
                 {{"KDUPDATER_INVOKE_RESULT", "5"}},
                 kAnswered +
                     Lines{kDone[0], "VantreKD_InvokeApplication returned error code  = 5"} +
                     Lines(kDone.begin() + 1, kDone.end()),
                 {"loaded", kLatest, "callback code=0", kInvoke, "release", "unloaded"}}),
    [](const auto& test) { return test.param.name; });

TEST_F(RunTest, EndsTheWorkflowWhenTheLibraryIsMissingOrIsNone) {
  const Lines expected = {"inside initialize.",
                          "Unable to load kodo library from path  = " + library.string(), kEnded};
  fs::create_directories(support);
  EXPECT_EQ(LauncherMessages(Run({"-mode=scheduled"}).log), expected);
  WriteFile(log, "");
  WriteFile(library, "no library");
  const Outcome outcome = Run({"-mode=scheduled"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(LauncherMessages(outcome.log), expected);
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
