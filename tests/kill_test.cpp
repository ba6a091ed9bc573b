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

using std::chrono::steady_clock;
using testing::AnyOf;

// Runs that write both defaults into the preferences and lines into the log.
class KillTest : public RunTest {
 protected:
  // Starts a run and ends it by `signal` after a random time, about as long as a run takes.
  void EndOneRun(int signal) {
    WriteFile(prefs, states[0]);
    const int run = Start({});
    usleep(std::uniform_int_distribution<useconds_t>(0, run_microseconds)(random));
    kill(run, signal);
    WaitFor(run);
  }

  ~KillTest() override {
    // glibc makes a semaphore under another name first. What is there for so long is nobody's.
    const auto is_unnamed = [](const std::string& name) {
      return name.starts_with("sem.") && name.size() == sizeof "sem.123456" - 1;
    };
    std::vector<std::string> left = Names("/dev/shm");
    std::erase_if(left, std::not_fn(is_unnamed));
    usleep(10'000);
    for (const std::string& name : left) unlink(("/dev/shm/" + name).c_str());
  }

  // True when there was a semaphore of the preference file, which is gone then.
  bool RemoveSemaphore() const { return esd::ResourceLocker(prefs, 0).Unlock(true); }

  void MeasureARun() {
    const auto start = steady_clock::now();
    WriteFile(prefs, states[0]);
    Run();
    run_microseconds = static_cast<useconds_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now() - start).count());
    WriteFile(log, "");
  }

  static constexpr int kRuns = 1000;
  // Before a run, and after each of its two writes.
  const std::string states[3] = {
      PrefsText({{"SomebodyElses", "1"}}),
      PrefsText({{"SomebodyElses", "1"}, {"StartupLogFile", log.string()}}),
      PrefsText({{"SomebodyElses", "1"}, {"StartupLogFile", log.string()}, {"LogLevel", "2"}})};
  useconds_t run_microseconds = 0;
  std::mt19937 random{1};
};

TEST_F(KillTest, ATerminatedRunLeavesTheFileWholeAndNoSemaphore) {
  MeasureARun();
  int reached[3] = {};
  for (int run = 0; run < kRuns; ++run) {
    EndOneRun(SIGTERM);
    EXPECT_FALSE(RemoveSemaphore());
    const auto state = std::find(std::begin(states), std::end(states), ReadFile(prefs));
    ASSERT_NE(state, std::end(states)) << ReadFile(prefs);
    ++reached[state - std::begin(states)];
  }
  std::printf("%d runs ended by SIGTERM: %d before the first write, %d between, %d after both\n",
              kRuns, reached[0], reached[1], reached[2]);
  EXPECT_GT(reached[0], 0);
  EXPECT_GT(reached[2], 0);
}

TEST_F(KillTest, AKilledRunLosesTheFileOnlyBetweenEmptyingAndWritingIt) {
  MeasureARun();
  int emptied = 0, locked = 0;
  for (int run = 0; run < kRuns; ++run) {
    EndOneRun(SIGKILL);
    const std::string text = ReadFile(prefs);
    EXPECT_THAT(text, AnyOf(states[0], states[1], states[2], ""));
    emptied += text.empty();
    locked += RemoveSemaphore();
  }
  std::printf("%d runs ended by SIGKILL: %d left the file empty, %d the semaphore behind\n", kRuns,
              emptied, locked);
}

TEST_F(KillTest, ALockLeftBehindCostsTheNextRunItsLogAndIsReported) {
  InstallLibrary();
  WriteFile(prefs, states[2]);
  esd::ResourceLocker left(prefs, 0);
  ASSERT_TRUE(left.Lock());
  const fs::path reported = top / "stderr";
  const auto report = [&] { ASSERT_NE(freopen(reported.c_str(), "w", stderr), nullptr); };
  const auto start = steady_clock::now();
  EXPECT_EQ(Run({}, {}, report).status, 0);
  const auto seconds = steady_clock::now() - start;
  std::printf("%.1f seconds\n", std::chrono::duration<double>(seconds).count());
  EXPECT_THAT(ReadFile(reported), testing::HasSubstr("no log for this run"));
  EXPECT_EQ(ReadFile(prefs), states[2]);
  left.Unlock(true);
  EXPECT_FALSE(Run({}).log.empty());
}

}  // namespace
}  // namespace test
