// Runs that are ended at any moment.

#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <random>

#include "esd/prefs/resource_locker.h"
#include "tests/run_support.h"

namespace test {
namespace {

using testing::AnyOf;

// Whether a process has the file open, as far as the system tells this one.
bool IsOpen(const fs::path& file) {
  std::error_code ignored;
  for (const auto& process : fs::directory_iterator("/proc")) {
    for (fs::directory_iterator open(process.path() / "fd", ignored), end; open != end;
         open.increment(ignored)) {
      if (fs::read_symlink(open->path(), ignored) == file) return true;
    }
  }
  return false;
}

// Runs that write both defaults into the preferences and lines into the log.
class KillTest : public RunTest {
 protected:
  KillTest() {
    const auto start = std::chrono::steady_clock::now();
    WriteFile(prefs, states[0]);
    Run();
    run_time = std::chrono::steady_clock::now() - start;
  }

  // glibc makes a semaphore under another name first, which a killed run leaves behind.
  ~KillTest() override {
    for (const std::string& name : Names("/dev/shm")) {
      const fs::path file = "/dev/shm/" + name;
      const bool is_unnamed = name.starts_with("sem.") && name.size() == sizeof "sem.123456" - 1;
      if (is_unnamed && !IsOpen(file)) unlink(file.c_str());
    }
  }

  // Starts a run and ends it by `signal` after a random time, about as long as a run takes.
  void EndOneRun(int signal) {
    WriteFile(prefs, states[0]);
    const pid_t run = Start({});
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(run_time);
    usleep(static_cast<useconds_t>(
        std::uniform_int_distribution<long>(0, microseconds.count())(random)));
    kill(run, signal);
    WaitFor(run);
  }

  // True when there was a semaphore of the preference file, which is gone then.
  bool RemoveSemaphore() const { return esd::ResourceLocker(prefs, 0).Unlock(true); }

  static constexpr int kRuns = 150;
  // Before a run, and after each of its two writes.
  const std::string states[3] = {
      PrefsText({{"SomebodyElses", "1"}}),
      PrefsText({{"SomebodyElses", "1"}, {"StartupLogFile", log.string()}}),
      PrefsText({{"SomebodyElses", "1"}, {"StartupLogFile", log.string()}, {"LogLevel", "2"}})};
  std::chrono::steady_clock::duration run_time{};
  std::mt19937 random{1};
};

TEST_F(KillTest, ATerminatedRunLeavesTheFileWholeAndNoSemaphore) {
  bool before_a_write = false, after_both = false;
  for (int run = 0; run < kRuns; ++run) {
    SCOPED_TRACE("run " + std::to_string(run));
    EndOneRun(SIGTERM);
    EXPECT_FALSE(RemoveSemaphore()) << "the semaphore of the preferences was left behind";
    const std::string text = ReadFile(prefs);
    ASSERT_THAT(text, AnyOf(states[0], states[1], states[2]));
    before_a_write |= text == states[0];
    after_both |= text == states[2];
  }
  EXPECT_TRUE(before_a_write && after_both) << "the runs were not ended at any moment";
}

TEST_F(KillTest, AKilledRunLeavesTheFileWhole) {
  for (int run = 0; run < kRuns; ++run) {
    SCOPED_TRACE("run " + std::to_string(run));
    EndOneRun(SIGKILL);
    ASSERT_THAT(ReadFile(prefs), AnyOf(states[0], states[1], states[2]));
    RemoveSemaphore();
  }
}

TEST_F(KillTest, ALockLeftBehindCostsTheNextRunItsLogAndIsReported) {
  InstallLibrary();
  WriteFile(prefs, states[2]);
  WriteFile(log, "");
  esd::ResourceLocker left(prefs, 0);
  ASSERT_TRUE(left.Lock());
  const fs::path reported = top / "stderr";
  const auto report = [&] { ASSERT_NE(freopen(reported.c_str(), "w", stderr), nullptr); };
  const Outcome outcome = Run({}, {}, report);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(Text(outcome.log), "");
  EXPECT_THAT(ReadFile(reported), testing::HasSubstr("no log for this run"));
  EXPECT_EQ(ReadFile(prefs), states[2]);
  left.Unlock(true);
}

}  // namespace
}  // namespace test
