#include <sched.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

#include "tests/log_support.h"
#include "welko/log_file_lock.h"

namespace {

using test::fs::path;
using welko::LogFileLock;

constexpr int kAttached = 0;
constexpr int kFree = 1;

class LogLock : public test::TreeTest {
 protected:
  LogLock() { test::WriteFile(log, ""); }

  int Set() const { return semget(ftok(log.c_str(), 11), 0, 0); }
  int Value(int semaphore) const { return semctl(Set(), semaphore, GETVAL); }
  /// Starts a child that waits for the lock, which must be taken, and reports whether it got it.
  int StartWaiter() const {
    const int child = test::StartChild([&] {
      std::signal(SIGUSR1, [](int) {});
      LogFileLock lock(log);
      return LogFileLock::Hold(&lock) ? 0 : 1;
    });
    while (semctl(Set(), kFree, GETNCNT) == 0) sched_yield();
    return child;
  }

  const path log = top / "logs/Some.log";
};

TEST_F(LogLock, HoldsBetweenEightThatStartTogetherAndStayOrComeAndGo) {
  auto* const shared = static_cast<std::atomic<int>*>(
      mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  std::atomic<int>&started = shared[0], &inside = shared[1];
  for (int round = 1; round <= 20; ++round) {
    const bool stay = round % 2 == 0;
    std::vector<int> children(8);
    for (int& child : children) {
      child = test::StartChild([&] {
        for (++started; started < 8 * round;) sched_yield();
        std::unique_ptr<LogFileLock> lock;
        for (int turn = 0; turn < 100; ++turn) {
          if (!stay) lock.reset();
          if (!lock) lock = std::make_unique<LogFileLock>(log);
          const LogFileLock::Hold hold(lock.get());
          if (!hold || inside.exchange(1) != 0) return 1;
          sched_yield();
          inside = 0;
        }
        if (stay) _exit(0);
        return 0;
      });
    }
    for (const int child : children) EXPECT_EQ(test::WaitFor(child), 0);
    EXPECT_EQ(Value(kAttached), stay ? 8 : -1);
    EXPECT_EQ(Value(kFree), stay ? 1 : -1);
    semctl(Set(), 0, IPC_RMID);
  }
}

TEST_F(LogLock, IsWaitedForPastASignalAndComesBackWhenItsHolderIsKilled) {
  const LogFileLock lock(log);
  const int holder = test::StartChild([&] {
    LogFileLock own(log);
    const LogFileLock::Hold hold(&own);
    return pause();
  });
  while (Value(kFree) != 0) sched_yield();
  const int waiter = StartWaiter();
  kill(waiter, SIGUSR1);
  const path status = "/proc/" + std::to_string(waiter) + "/status";
  const std::string delivered = "ShdPnd:\t" + std::string(16, '0');
  while (test::ReadFile(status).find(delivered) == std::string::npos) sched_yield();
  kill(holder, SIGKILL);
  EXPECT_EQ(test::WaitFor(waiter), 0);
  EXPECT_EQ(Value(kFree), 1);
}

TEST_F(LogLock, IsMadeAnewWhenItsSetWasRemoved) {
  LogFileLock lock(log);
  semctl(Set(), 0, IPC_RMID);
  {
    const LogFileLock::Hold hold(&lock);
    ASSERT_TRUE(hold);
    const int waiter = StartWaiter();
    semctl(Set(), 0, IPC_RMID);
    EXPECT_EQ(test::WaitFor(waiter), 0);
  }
  // What was released above is no turn of the set that came after it.
  EXPECT_TRUE(LogFileLock::Hold(&lock));
  EXPECT_EQ(Value(kFree), 1);
  EXPECT_EQ(Value(kAttached), 1);
}

TEST_F(LogLock, WorksWhenTheCountOfTheAttachedIsFull) {
  const LogFileLock first(log);
  semctl(Set(), kAttached, SETVAL, 32767);
  {
    LogFileLock uncounted(log);
    EXPECT_TRUE(LogFileLock::Hold(&uncounted));
  }
  EXPECT_EQ(Value(kAttached), 32767);
}

TEST_F(LogLock, MendsASetWhoseMakerOrRemoverDied) {
  for (const int free : {0, 1}) {
    const int set = semget(ftok(log.c_str(), 11), 2, IPC_CREAT | 0666);
    ASSERT_EQ(semctl(set, kFree, SETVAL, free), 0);
    const LogFileLock lock(log);
    EXPECT_EQ(Value(kAttached), 1);
    EXPECT_EQ(Value(kFree), 1);
  }
}

}  // namespace
