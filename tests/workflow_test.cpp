#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <tuple>

#include "esd/log/updater_log.h"
#include "launcher/kodo_launcher.h"
#include "launcher/platform_mutex.h"
#include "tests/run_support.h"

namespace test {
namespace {

using std::chrono::steady_clock;

// What happened, in order, one line each: the launcher's lines of a log, less what all of them
// begin with, and among them those that the client library wrote into it.
std::string Story(const Lines& log) {
  const std::string tag = "VantreUpdaterKodoLauncher : ";
  std::string story;
  for (const std::string& line : log) {
    const std::string message = Messages({line}).front();
    if (message.starts_with(tag)) story += message.substr(tag.size()) + "\n";
    if (message == line) story += "library: " + line + "\n";
  }
  return story;
}

class WorkflowTest : public RunTest {
 protected:
  /// The story of a run, which leaves no other in the log.
  std::string StoryOfRun(std::map<std::string, std::string> settings = {}) const {
    WriteFile(log, "");
    settings.emplace("KDUPDATER_TRACE", log);
    const Outcome outcome = Run({"-mode=scheduled"}, settings);
    EXPECT_EQ(outcome.status, 0);
    return Story(outcome.log);
  }
};

const std::string kInitialized = "inside initialize.\nlibrary: loaded\n";
const std::string kAsked = kInitialized +
                           "inside getLatestKDApplication.\nlibrary: latest record=4 "
                           "name=MondoUpdater version=" WAKERLY_VERSION " reserved=0\n";
const std::string kCalled = "library: callback code=0\n";
const std::string kCalledOne = "library: callback code=1\n";
const std::string kAnswered = "inside waitForCFUCallBack.\nVantreKD_CFUCallbackFn is invoked\n";
const std::string kInvoked = kAsked + kCalled + kAnswered +
                             "inside invokeKDApplication.\n"
                             "library: invoke record=4 name=MondoUpdater reserved=0\n";
const std::string kReleased = "VantreKD_ReleaseRef called.\nlibrary: release\n";
const std::string kFinalizing = "inside finalize.\n";
const std::string kUnloaded = "library: unloaded\n";
const std::string kEnd = kUnloaded + "unloaded kodo library\n";
const std::string kThrown = "Error encountered in Kodo WorkFlow = ";
const std::string kError = kThrown + "std::exception\n";
const std::string kUnknown = "Unknown Error encountered in Kodo WorkFlow \n";
const std::string kCode = "VantreKD_CFUCallbackFn returned error code  = ";

struct Workflow {
  const char* name;
  std::map<std::string, std::string> settings;  // their names without "KDUPDATER_"
  std::string story;
};

const Workflow kWorkflows[] = {
    {"callback before the wait", {}, kInvoked + kReleased + kFinalizing + kEnd},
    {"callback before the wait, and again with an error",
     {{"CALLBACK", "request,request"}, {"CALLBACK_CODE", "0,0xFFFFFFFF"}},
     kAsked + kCalled + "library: callback code=4294967295\n" + kAnswered + kCode + "-1\n" +
         kError + kUnloaded},
    {"callback again after the wait",
     {{"CALLBACK", "request,release,unload"}, {"CALLBACK_CODE", "0,1"}},
     kInvoked + kReleased + kCalledOne + kFinalizing + kCalledOne + kEnd},
    {"callback again when the launcher is gone",
     {{"CALLBACK", "request,unload"}, {"CALLBACK_CODE", "1"}},
     kAsked + kCalledOne + kAnswered + kCode + "1\n" + kError + kCalledOne + kUnloaded},
    {"request throws, callback late",
     {{"THROWS", "latest:exception"}, {"CALLBACK", "thread"}, {"CALLBACK_DELAY_MS", "300"}},
     kAsked + kThrown + "thrown by latest\n" + kCalled + kUnloaded},
    {"request throws a number",
     {{"THROWS", "latest:other"}},
     kAsked + kCalled + kUnknown + kUnloaded},
    {"invocation fails",
     {{"INVOKE_RESULT", "0xFFFFFFFF"}},
     kInvoked + "VantreKD_InvokeApplication returned error code  = -1\n" + kReleased + kFinalizing +
         kEnd},
    {"invocation throws",
     {{"THROWS", "invoke:exception"}},
     kInvoked + kThrown + "thrown by invoke\n" + kUnloaded},
    {"invocation throws no text",
     {{"THROWS", "invoke:mute"}},
     kInvoked + kThrown + "\n" + kUnloaded},
    {"invocation throws a number", {{"THROWS", "invoke:other"}}, kInvoked + kUnknown + kUnloaded},
    {"release throws",
     {{"THROWS", "release:exception"}},
     kInvoked + kReleased + kThrown + "thrown by release\n" + kUnloaded},
    {"release throws a number",
     {{"THROWS", "release:other"}},
     kInvoked + kReleased + kUnknown + kUnloaded}};

// None of the launcher's lines is so important as to be there at level 1.
TEST_F(WorkflowTest, GoesAsTheLibraryAnswers) {
  InstallLibrary();
  for (const auto& [name, short_settings, story] : kWorkflows) {
    SCOPED_TRACE(name);
    std::map<std::string, std::string> settings;
    for (const auto& [setting, value] : short_settings) settings["KDUPDATER_" + setting] = value;
    WriteFile(prefs, PrefsText({{"LogLevel", "2"}}));
    EXPECT_EQ(StoryOfRun(settings), story);
    WriteFile(prefs, PrefsText({{"LogLevel", "1"}}));
    settings["KDUPDATER_TRACE"] = library_trace;
    EXPECT_EQ(StoryOfRun(settings), "") << "at LogLevel 1";
  }
}

TEST_F(WorkflowTest, EndsWithEveryResultOfTheRequestButTaken) {
  InstallLibrary();
  const std::pair<const char*, const char*> results[] = {
      {"0", "0"}, {"1", "1"}, {"0x101", "257"}, {"0x10102", "65794"}, {"0xFFFFFFFF", "-1"}};
  for (const auto& [result, logged] : results) {
    SCOPED_TRACE(std::string("the request's result is ") + result);
    const std::string line = "VantreKD_GetLatestKDApplication returned error code  = ";
    ASSERT_EQ(StoryOfRun({{"KDUPDATER_LATEST_RESULT", result}}),
              kAsked + line + logged + "\n" + kError + kUnloaded);
  }
}

TEST_F(WorkflowTest, LooksForTheCallbackWhenTheWaitBeginsAndThenOnceASecond) {
  InstallLibrary();
  const std::tuple<const char*, const char*, int> rows[] = {
      {"request", "0", 0}, {"thread", "300", 1}, {"thread", "1200", 2}};
  for (const auto& [callback, delay, seconds] : rows) {
    SCOPED_TRACE(std::string("callback by the ") + callback + ", delayed by ms: " + delay);
    // A busy machine makes one run longer, hardly each of three.
    auto shortest = std::chrono::seconds::max();
    for (int run = 0; run < 3 && shortest.count() > seconds; ++run) {
      const auto start = steady_clock::now();
      StoryOfRun({{"KDUPDATER_CALLBACK", callback}, {"KDUPDATER_CALLBACK_DELAY_MS", delay}});
      const auto duration = steady_clock::now() - start;
      shortest = std::min(shortest, std::chrono::floor<std::chrono::seconds>(duration));
    }
    EXPECT_EQ(shortest.count(), seconds) << "whole seconds that the run took";
  }
}

// The log's path is relative, the home folder is closed to other users, and the client library
// meddles before most of the lines are written.
TEST_F(WorkflowTest, EndsAsEverWhateverTheLibraryMeddlesWith) {
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
  for (const std::string what : {"", "euid", "folder", "locale", "signals", "thread"}) {
    SCOPED_TRACE("the library meddles with: " + what);
    WriteFile("logs/run.log", "");
    fs::remove(library_trace);
    // The search for leaks fails in a process of two users.
    std::map<std::string, std::string> settings = {{"LSAN_OPTIONS", "detect_leaks=0"}};
    if (!what.empty()) settings["KDUPDATER_MEDDLES"] = what;
    const Outcome outcome = Run({"-mode=scheduled"}, settings);
    EXPECT_EQ(outcome.status, 0);
    ASSERT_FALSE(outcome.library.empty());
    // A thread that goes on keeps the library loaded.
    EXPECT_EQ(outcome.library.back(),
              what == "thread" ? "still loaded at the end of the process" : "unloaded");
    const Lines lines = ReadLog("logs/run.log");
    if (undisturbed.empty()) undisturbed = lines;
    EXPECT_TRUE(Story(lines).ends_with("unloaded kodo library\n")) << Text(lines);
    EXPECT_EQ(Text(lines), Text(undisturbed));
  }
}

TEST_F(WorkflowTest, EndsWhenTheLibraryIsMissingOrIsNone) {
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"missing", [] {}},
      {"another file", [&] { WriteFile(library, "no library"); }},
      {"a pipe", [&] { mkfifo(library.c_str(), 0600); }},
      {"calls what exists nowhere", [&] { fs::copy_file(UNBOUND_LIBRARY, library); }}};
  fs::create_directories(library.parent_path());
  for (const auto& [name, lay] : cases) {
    SCOPED_TRACE(name);
    fs::remove(library);
    lay();
    EXPECT_EQ(StoryOfRun(), "inside initialize.\nUnable to load kodo library from path  = " +
                                library.string() + "\n" + kError);
  }
}

TEST_F(WorkflowTest, EndsAtTheFirstEntryPointThatIsMissing) {
  InstallLibrary();
  for (const std::string symbol : {"Vantre_KD_ReleaseRef", "Vantre_KD_InvokeApplication",
                                   "Vantre_KD_GetLatestKDApplication"}) {
    SCOPED_TRACE(symbol);
    // Another name in the library's symbol table; the earlier ones stay renamed.
    std::string bytes = ReadFile(library);
    for (std::size_t at = 0; (at = bytes.find(symbol, at)) != std::string::npos; ++at) {
      bytes[at] = 'x';
    }
    fs::remove(library);
    WriteFile(library, bytes);
    EXPECT_EQ(StoryOfRun(), kInitialized + "Unable to find the handle to API " + symbol + ".\n" +
                                kError + kUnloaded);
  }
}

// A launcher that the callback had made would end its wait at once, with the 7 for an error.
TEST_F(WorkflowTest, ACallbackWithoutALauncherHasNoEffect) {
  using wakerly::VantreUpdaterKodoLauncher;
  InstallLibrary();
  ExpectInChild([&] {
    setenv("KDUPDATER_TRACE", log.c_str(), 1);
    setenv("KDUPDATER_CALLBACK_DELAY_MS", "100", 1);
    esd::InitUpdaterLog(log, 2, "", "UPDATER", "WAKERLY");
    VantreUpdaterKodoLauncher* const launcher = VantreUpdaterKodoLauncher::getInstance();
    EXPECT_EQ(VantreUpdaterKodoLauncher::getInstance(), launcher);
    VantreUpdaterKodoLauncher::destroyInstance();
    VantreUpdaterKodoLauncher::destroyInstance();
    VantreKD_CFUCallbackFn(7);
    VantreUpdaterKodoLauncher::getInstance()->runKodoWorkflow();
    VantreUpdaterKodoLauncher::destroyInstance();
  });
  EXPECT_TRUE(Story(ReadLog(log)).ends_with(kFinalizing + kEnd)) << Text(ReadLog(log));
}

// A lock that is not recursive waits for ever.
TEST(PlatformMutex, IsRecursiveWithAName) {
  ExpectInChild([] {
    wakerly::PlatformMutex named("a name");
    const std::lock_guard<wakerly::PlatformMutex> outer(named);
    const std::lock_guard<wakerly::PlatformMutex> inner(named);
  });
}

}  // namespace
}  // namespace test
