#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstdio>

#include "esd/log/updater_log.h"
#include "launcher/kodo_launcher.h"
#include "tests/run_support.h"
#include "welko/native_library.h"
#include "welko/support_log.h"

namespace test {
namespace {

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
  std::string StoryOfRun(Settings settings = {}) const {
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
const std::string kUnloaded = "library: unloaded\n";
const std::string kEnd = "inside finalize.\n" + kUnloaded + "unloaded kodo library\n";
const std::string kThrown = "Error encountered in Kodo WorkFlow = ";
const std::string kRefused = kAsked + "VantreKD_GetLatestKDApplication returned error code  = ";
const std::string kError = kThrown + "std::exception\n";
const std::string kUnknown = "Unknown Error encountered in Kodo WorkFlow \n";
const std::string kCode = "VantreKD_CFUCallbackFn returned error code  = ";

struct Workflow {
  const char* name;
  Settings settings;  // their names without "KDUPDATER_"
  std::string story;
};

const Workflow kWorkflows[] = {
    {"callback before the wait", {}, kInvoked + kReleased + kEnd},
    {"callback before the wait, and again with an error",
     {{"CALLBACK", "request,request"}, {"CALLBACK_CODE", "0,0xFFFFFFFF"}},
     kAsked + kCalled + "library: callback code=4294967295\n" + kAnswered + kCode + "-1\n" +
         kError + kUnloaded},
    {"callback again when the launcher is gone",
     {{"CALLBACK", "request,unload"}, {"CALLBACK_CODE", "1"}},
     kAsked + kCalledOne + kAnswered + kCode + "1\n" + kError + kCalledOne + kUnloaded},
    {"request not taken, with 0", {{"LATEST_RESULT", "0"}}, kRefused + "0\n" + kError + kUnloaded},
    {"request not taken, with 258 in its lower half",
     {{"LATEST_RESULT", "0x10102"}},
     kRefused + "65794\n" + kError + kUnloaded},
    {"request throws, callback late",
     {{"THROWS", "latest:exception"}, {"CALLBACK", "thread"}, {"CALLBACK_DELAY_MS", "300"}},
     kAsked + kThrown + "thrown by latest\n" + kCalled + kUnloaded},
    {"invocation fails",
     {{"INVOKE_RESULT", "0xFFFFFFFF"}},
     kInvoked + "VantreKD_InvokeApplication returned error code  = -1\n" + kReleased + kEnd},
    {"invocation throws no text",
     {{"THROWS", "invoke:mute"}},
     kInvoked + kThrown + "\n" + kUnloaded},
    {"release throws a number",
     {{"THROWS", "release:other"}},
     kInvoked + kReleased + kUnknown + kUnloaded}};

TEST_F(WorkflowTest, GoesAsTheLibraryAnswers) {
  InstallLibrary();
  for (const auto& [name, short_settings, story] : kWorkflows) {
    SCOPED_TRACE(name);
    Settings settings;
    for (const auto& [setting, value] : short_settings) settings["KDUPDATER_" + setting] = value;
    WriteFile(prefs, PrefsText({{"LogLevel", "2"}}));
    EXPECT_EQ(StoryOfRun(settings), story);
    WriteFile(prefs, PrefsText({{"LogLevel", "1"}}));
    settings["KDUPDATER_TRACE"] = library_trace;
    EXPECT_EQ(StoryOfRun(settings), "") << "at LogLevel 1";
  }
}

TEST_F(WorkflowTest, LooksForTheCallbackWhenTheWaitBeginsAndThenOnceASecond) {
  InstallLibrary();
  for (const auto& [callback, seconds] : {std::pair("request", 0), std::pair("thread", 1)}) {
    SCOPED_TRACE(std::string("callback by the ") + callback);
    // A busy machine makes one run longer, hardly each of three.
    long shortest = 60;
    for (int run = 0; run < 3 && shortest > seconds; ++run) {
      const auto start = std::chrono::steady_clock::now();
      StoryOfRun({{"KDUPDATER_CALLBACK", callback}, {"KDUPDATER_CALLBACK_DELAY_MS", "300"}});
      const auto duration = std::chrono::steady_clock::now() - start;
      shortest = std::min<long>(shortest, duration / std::chrono::seconds(1));
    }
    EXPECT_EQ(shortest, seconds) << "whole seconds that the run took";
  }
}

// The log's path is relative, the home folder is closed to other users, and the client library
// meddles before most of the lines are written.
TEST_F(WorkflowTest, EndsAsEverWhateverTheLibraryMeddlesWith) {
  InstallLibrary();
  fs::current_path(top);
  WriteFile(prefs, PrefsText({{"StartupLogFile", "logs/run.log"}, {"LogLevel", "2"}}));
  WriteFile(top / "foreign.source",
            "LC_TIME\nd_fmt \"%Y-%m-%d\"\nt_fmt \"%H.%M.%S\"\nEND LC_TIME\n");
  // Its status says only that other categories are missing.
  ASSERT_GE(std::system("localedef --force --quiet --inputfile=foreign.source ./foreign"), 0);
  std::string first;
  for (const std::string what : {"signals", "euid", "folder", "locale", "thread"}) {
    SCOPED_TRACE("the library meddles with: " + what);
    WriteFile("logs/run.log", "");
    // The text of a second is made once; a wait brings another second. The search for leaks fails
    // in a process of two users.
    const Settings settings = {{"KDUPDATER_MEDDLES", what},
                               {"KDUPDATER_CALLBACK", what == "locale" ? "thread" : "request"},
                               {"KDUPDATER_CALLBACK_DELAY_MS", "100"},
                               {"LOCPATH", top},
                               {"LC_ALL", "foreign"},
                               {"LSAN_OPTIONS", "detect_leaks=0"}};
    const Outcome outcome = Run({"-mode=scheduled"}, settings);
    EXPECT_EQ(outcome.status, 0);
    // A thread that goes on keeps the library loaded.
    EXPECT_EQ(outcome.library.at(outcome.library.size() - 1),
              what == "thread" ? "still loaded at the end of the process" : "unloaded");
    const std::string found = Text(ReadLog("logs/run.log"));
    if (first.empty()) first = found;
    EXPECT_EQ(found, first);
    EXPECT_TRUE(found.ends_with("unloaded kodo library\n")) << found;
  }
}

TEST_F(WorkflowTest, EndsWhenTheLibraryIsNone) {
  fs::create_directories(library.parent_path());
  const std::string story =
      "inside initialize.\nUnable to load kodo library from path  = " + library.string() + "\n" +
      kError;
  mkfifo(library.c_str(), 0600);
  EXPECT_EQ(StoryOfRun(), story) << "for a pipe";
  fs::remove(library);
  fs::copy_file(UNBOUND_LIBRARY, library);
  EXPECT_EQ(StoryOfRun(), story) << "for a library that calls what exists nowhere";
}

TEST_F(WorkflowTest, EndsAtTheFirstEntryPointThatIsMissing) {
  InstallLibrary();
  for (const std::string symbol : {"Vantre_KD_ReleaseRef", "Vantre_KD_InvokeApplication",
                                   "Vantre_KD_GetLatestKDApplication"}) {
    SCOPED_TRACE(symbol);
    // Another name in the library's symbol table; the earlier ones stay renamed.
    std::string bytes = ReadFile(library);
    for (std::size_t at; (at = bytes.find(symbol)) != std::string::npos;) bytes[at] = 'x';
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
    VantreUpdaterKodoLauncher::getInstance();
    VantreUpdaterKodoLauncher::destroyInstance();
    VantreUpdaterKodoLauncher::destroyInstance();
    VantreKD_CFUCallbackFn(7);
    VantreUpdaterKodoLauncher::getInstance()->runKodoWorkflow();
    VantreUpdaterKodoLauncher::destroyInstance();
  });
  EXPECT_TRUE(Story(ReadLog(log)).ends_with(kEnd)) << Text(ReadLog(log));
}

std::string g_reported;  // what the support log was told last

void Hook(int level, const char* logger, const char* module, const char*, const char*,
          const char* format, ...) {
  std::va_list texts;
  va_start(texts, format);
  char text[1000];
  std::vsnprintf(text, sizeof text, format, texts);
  va_end(texts);
  g_reported = Text({"hook", "level " + std::to_string(level), logger, module, text});
}

struct Sink : welko::SupportLogSink {
  void Log(int level, const char*, const char* module, const char* format, ...) override {
    g_reported = Text({"sink", "level " + std::to_string(level), module, format});
  }
};

TEST_F(RunTest, NativeLibraryKeepsTheFirstLibraryThatItCouldLoad) {
  InstallLibrary();
  ExpectInChild([&] {
    welko::NativeLibrary native;
    EXPECT_EQ(native.GetSymbol("malloc"), nullptr) << "found, without a library, somewhere else";
    EXPECT_FALSE(native.Load(top / "missing"));
    ASSERT_TRUE(native.Load(library));
    void* const first = native.handle();
    EXPECT_NE(native.GetSymbol("Vantre_KD_ReleaseRef"), nullptr);
    EXPECT_TRUE(native.Load(CLIENT_LIBRARY));
    EXPECT_EQ(native.handle(), first) << "after another load";
    EXPECT_EQ(dlopen(CLIENT_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "loaded nevertheless";
    dlclose(first);
  });
}

// The hook comes before the sink; without either nothing is reported.
TEST_F(RunTest, NativeLibraryReportsAFailureToTheSupportLog) {
  ExpectInChild([&] {
    const std::string path = top / "missing.dylib";
    Sink sink;
    EXPECT_FALSE(welko::NativeLibrary().Load(path));
    welko::g_support_log_sink = &sink;
    EXPECT_FALSE(welko::NativeLibrary().Load(path));
    EXPECT_EQ(g_reported, Text({"sink", "level 40", "NativeLibrary",
                                "Unable to load library at path: %s. Error: %s"}));
    welko::g_support_log_hook = Hook;
    EXPECT_FALSE(welko::NativeLibrary().Load(path));
    const std::string error = path + ": cannot open shared object file: No such file or directory";
    EXPECT_EQ(g_reported, Text({"hook", "level 40", "WelkoUtils", "NativeLibrary",
                                "Unable to load library at path: " + path + ". Error: " + error}));
  });
}

}  // namespace
}  // namespace test
