// What a run that has no log says on standard error.

#include <gmock/gmock.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

#include "esd/prefs/resource_locker.h"
#include "tests/run_support.h"

namespace test {
namespace {

using testing::HasSubstr;

class ReportTest : public RunTest {
 protected:
  ReportTest() {
    InstallLibrary();
    SetLevel("2");
  }

  void SetLevel(const std::string& level) const {
    WriteFile(prefs, PrefsText({{"StartupLogFile", log}, {"LogLevel", level}}));
  }

  // What a run says that does its work otherwise.
  std::string Said(const std::function<void()>& prepare = {}) const {
    const Outcome outcome = Run({}, {{"LSAN_OPTIONS", "detect_leaks=0"}}, [&] {
      if (freopen(said.c_str(), "w", stderr) == nullptr) _exit(126);
      if (prepare) prepare();
    });
    EXPECT_EQ(outcome.status, 0);
    return ReadFile(said);
  }

  const fs::path said = top / "stderr";
};

TEST_F(ReportTest, NothingIsSaidWhereThereIsALogOrNoneIsWanted) {
  for (const char* level : {"1", "10", "0", "-3"}) {
    SetLevel(level);
    EXPECT_EQ(Said(), "") << "level " << level;
  }
}

TEST_F(ReportTest, ALockIsNamedWithTheCommandThatClearsIt) {
  esd::ResourceLocker other(prefs, 0);
  ASSERT_TRUE(other.Lock());
  const std::string line = Said();
  EXPECT_THAT(line, HasSubstr("killed: " + prefs.string() + ", semaphore /"));
  const std::size_t command = line.find("rm '");
  ASSERT_NE(command, std::string::npos) << line;
  EXPECT_EQ(std::system(line.substr(command).c_str()), 0) << line;
  EXPECT_EQ(Said(), "") << "after the command";
}

TEST_F(ReportTest, EachOtherReasonIsSaidInOneLineWithItsFile) {
  const auto obey = [] { prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE); };
  const auto limit_files = [] {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit size = {4096, 4096};
    setrlimit(RLIMIT_FSIZE, &size);
  };
  const auto block_folders = [&] {
    fs::remove_all(home / "Library");
    WriteFile(home / "Library", "in the place of a folder");
    WriteFile(root / "tmp", "in the place of a folder");
  };
  const std::string unwritable = log.string() + " cannot be written: ";
  const struct {
    const char* what;
    std::function<void()> put, prepare;
    std::string reason;
  } rows[] = {
      {"folder for a log", [&] { fs::create_directory(log); }, {}, unwritable + "Is a directory"},
      {"device for a log", [&] { fs::create_symlink("/dev/null", log); }, {}, unwritable + "it is"},
      {"read-only log", [&] { WriteFile(log, ""), chmod(log.c_str(), 0400); }, obey,
       unwritable + "Permission denied"},
      {"full disk", [&] { WriteFile(log, std::string(5000, 'x')); }, limit_files,
       unwritable + "not a line"},
      {"level with a control character",
       [&] { SetLevel("lo\nud"); },
       {},
       "LogLevel is no number: \"lo?ud\" in " + prefs.string()},
      {"no folder", block_folders, {}, "there is no folder for VantreUpdaterPrefs.dat, neither"}};
  for (const auto& row : rows) {
    fs::remove_all(log);
    row.put();
    const std::string line = Said(row.prepare);
    EXPECT_THAT(line, HasSubstr("]: no log for this run: " + row.reason)) << row.what;
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << row.what << ": " << line;
  }
}

TEST_F(ReportTest, ABrokenStandardErrorEndsNoRun) {
  SetLevel("loud");
  const Outcome outcome = Run({}, {}, [] {
    int ends[2];
    if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0) _exit(126);
    for (const int end : ends) close(end);
    signal(SIGPIPE, SIG_DFL);
  });
  EXPECT_EQ(outcome.status, 0);
  EXPECT_FALSE(outcome.library.empty()) << "the client library was not driven";
}

}  // namespace
}  // namespace test
