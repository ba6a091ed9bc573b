#include "welko/log_file_lock.h"

#include <sched.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

#include "tests/test_support.h"

namespace {

using test::fs::path;
using welko::LogFileLock;

constexpr int kAttached = 0;
constexpr int kFree = 1;

class LogLock : public test::TreeTest {
 protected:
  LogLock() { test::MakeEmptyLog(log); }

  int Set() const { return semget(ftok(log.c_str(), 11), 0, 0); }
  /// What the set says, as in "1 attached, free".
  std::string State() const {
    const int free = semctl(Set(), kFree, GETVAL);
    if (free == -1) return "no set";
    return std::to_string(semctl(Set(), kAttached, GETVAL)) + " attached, " +
           (free == 0   ? "held"
            : free == 1 ? "free"
                        : "free " + std::to_string(free) + " times");
  }
  /// Starts a child that is ended when it lasts longer than a test waits, whatever it waits for.
  static pid_t StartLimited(const std::function<int()>& body) {
    return test::StartChild([&] {
      alarm(test::kDeadline.count());
      return body();
    });
  }
  /// Starts a child that waits for the lock, which must be held; its status is 0 if it got it.
  pid_t StartWaiter() const {
    const pid_t child = StartLimited([&] {
      std::signal(SIGUSR1, [](int) {});
      LogFileLock lock(log);
      return LogFileLock::Hold(&lock) ? 0 : 1;
    });
    test::Eventually("a process to wait for the lock",
                     [&] { return semctl(Set(), kFree, GETNCNT) > 0; });
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
    std::vector<pid_t> children(8);
    for (pid_t& child : children) {
      child = StartLimited([&] {
        for (++started; started < 8 * round;) sched_yield();
        std::unique_ptr<LogFileLock> lock;
        for (int turn = 0; turn < 100; ++turn) {
          if (!stay) lock.reset();
          if (!lock) lock = std::make_unique<LogFileLock>(log);
          const LogFileLock::Hold hold(lock.get());
          if (!hold) return 1;
          if (inside.exchange(1) != 0) return 2;
          sched_yield();
          inside = 0;
        }
        if (stay) _exit(0);  // without detaching
        return 0;
      });
    }
    for (const pid_t child : children) {
      EXPECT_EQ(test::WaitFor(child), 0)
          << "1 means that the lock cannot be had, 2 that two hold it";
    }
    EXPECT_EQ(State(), stay ? "8 attached, free" : "no set") << "after round " << round;
    test::RemoveLogLock(log);
    if (HasFailure()) break;  // a round can last as long as a deadline
  }
  munmap(shared, 4096);
}

TEST_F(LogLock, IsWaitedForPastASignalAndComesBackWhenItsHolderIsKilled) {
  const LogFileLock lock(log);
  const pid_t holder = StartLimited([&] {
    LogFileLock own(log);
    const LogFileLock::Hold hold(&own);
    return pause();
  });
  test::Eventually("the lock to be held", [&] { return State() == "2 attached, held"; });
  const pid_t waiter = StartWaiter();
  kill(waiter, SIGUSR1);
  const path status = "/proc/" + std::to_string(waiter) + "/status";
  const std::string delivered = "ShdPnd:\t" + std::string(16, '0');
  test::Eventually("the signal to be delivered",
                   [&] { return test::ReadFile(status).find(delivered) != std::string::npos; });
  kill(holder, SIGKILL);
  EXPECT_EQ(test::WaitFor(waiter), 0) << "1 means that the waiter did not get the lock";
  EXPECT_EQ(State(), "2 attached, free") << "with this process and the killed one attached";
}

TEST_F(LogLock, IsMadeAnewWhenItsSetWasRemoved) {
  test::ExpectInChild([this] {
    LogFileLock lock(log);
    test::RemoveLogLock(log);
    {
      const LogFileLock::Hold hold(&lock);
      ASSERT_TRUE(hold);
      const pid_t waiter = StartWaiter();
      test::RemoveLogLock(log);
      EXPECT_EQ(test::WaitFor(waiter), 0) << "1 means that the waiter did not get the lock";
    }
    // What was released above is no turn of the set that came after it.
    EXPECT_TRUE(LogFileLock::Hold(&lock));
    EXPECT_EQ(State(), "1 attached, free");
  });
}

TEST_F(LogLock, WorksWhenTheCountOfTheAttachedIsFull) {
  const LogFileLock first(log);
  semctl(Set(), kAttached, SETVAL, 32767);
  test::ExpectInChild([this] {
    LogFileLock uncounted(log);
    EXPECT_TRUE(LogFileLock::Hold(&uncounted));
  });
  EXPECT_EQ(State(), "32767 attached, free");
}

TEST_F(LogLock, MendsASetWhoseMakerOrRemoverDied) {
  for (const int free : {0, 1}) {
    const int set = semget(ftok(log.c_str(), 11), 2, IPC_CREAT | 0666);
    ASSERT_EQ(semctl(set, kFree, SETVAL, free), 0);
    const LogFileLock lock(log);
    EXPECT_EQ(State(), "1 attached, free") << "from a set that was " << (free ? "free" : "held");
  }
}

}  // namespace
