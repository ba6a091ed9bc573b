#include "welko/log_file_lock.h"

#include <sched.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

#include "tests/log_support.h"

namespace test {
namespace {

using welko::LogFileLock;

constexpr int kAttached = 0, kFree = 1;  // the set's two semaphores

class LogLock : public LogTest {
 protected:
  int Set() const { return semget(ftok(log.c_str(), 11), 0, 0); }
  /// The numbers of the set, as in "2 attached, 1 free"; 0 are free while the lock is held.
  std::string State() const {
    const int attached = semctl(Set(), kAttached, GETVAL), free = semctl(Set(), kFree, GETVAL);
    if (attached == -1) return "no set";
    return std::to_string(attached) + " attached, " + std::to_string(free) + " free";
  }
  /// Starts a child that waits for the lock, which must be held; its status is 0 if it got it.
  pid_t StartWaiter() const {
    const pid_t child = StartChild([&] {
      alarm(kDeadline.count());  // nobody else may be left to end it
      static std::string told;
      told = folder / "signal";
      std::signal(SIGUSR1, [](int) { unlink(told.c_str()); });
      return LogFileLock(log).Acquire() ? 0 : 1;
    });
    Eventually("a process to wait for the lock", [&] { return semctl(Set(), kFree, GETNCNT) > 0; });
    return child;
  }
};

// With two, nearly every turn makes the set and removes it.
TEST_F(LogLock, HoldsBetweenTwoThatComeAndGo) {
  auto* const inside =
      static_cast<std::atomic<int>*>(mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE,
                                          MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  SCOPED_TRACE("status 1 means that the lock cannot be had, 2 that both hold it");
  RunAll(2, [&](int) {
    for (int turn = 0; turn < 30000; ++turn) {
      LogFileLock lock(log);
      if (!lock.Acquire()) return 1;
      if (inside->exchange(1) != 0) return 2;
      sched_yield();
      *inside = 0;
      lock.Release();
    }
    return 0;
  });
  EXPECT_EQ(State(), "no set");
  munmap(inside, sizeof(std::atomic<int>));
}

TEST_F(LogLock, IsWaitedForPastASignalAndComesBackWhenItsHolderIsKilled) {
  const pid_t holder = StartChild([&] { return LogFileLock(log).Acquire() && pause(); });
  Eventually("the lock to be held", [&] { return State() == "1 attached, 0 free"; });
  const pid_t waiter = StartWaiter();
  WriteFile(folder / "signal", "");
  kill(waiter, SIGUSR1);
  Eventually("the signal to be delivered", [&] { return !fs::exists(folder / "signal"); });
  kill(holder, SIGKILL);
  EXPECT_EQ(WaitFor(waiter), 0) << "1 means that the waiter did not get the lock";
  EXPECT_EQ(State(), "1 attached, 1 free") << "with the killed process attached";
}

TEST_F(LogLock, IsMadeAnewWhenItsSetWasRemoved) {
  ExpectInChild([this] {
    LogFileLock lock(log);
    RemoveLogLock(log);
    ASSERT_TRUE(lock.Acquire());
    const pid_t waiter = StartWaiter();
    RemoveLogLock(log);
    EXPECT_EQ(WaitFor(waiter), 0) << "1 means that the waiter did not get the lock";
    lock.Release();  // no turn of the set that comes next
    EXPECT_TRUE(LogFileLock::Hold(&lock));
    EXPECT_EQ(State(), "1 attached, 1 free");
  });
}

TEST_F(LogLock, IsLookedAtAsItStandsAndLeftSo) {
  const auto look = [this] {
    const std::string before = State();
    const auto found = LogFileLock::LookAt(log);
    const int error = errno;
    EXPECT_EQ(State(), before) << "after the look";
    if (!found) return "error " + std::to_string(error);
    EXPECT_EQ(
        std::to_string(found->attached) + " attached, " + (found->is_free ? "1" : "0") + " free",
        before);
    return std::string(found->last == getpid() ? "last taken here" : "last taken elsewhere");
  };
  const std::string none = "error " + std::to_string(ENOENT);
  EXPECT_EQ(look(), none);
  {
    LogFileLock lock(log);
    const LogFileLock other(log);
    EXPECT_EQ(look(), "last taken here");
    const LogFileLock::Hold hold(&lock);
    ExpectInChild([&] { EXPECT_EQ(look(), "last taken elsewhere"); });
  }
  EXPECT_EQ(look(), none) << "after the last has gone";
  if (geteuid() != 0) return;  // nobody else has sets that others may not use
  ASSERT_NE(semget(ftok(log.c_str(), 11), 2, IPC_CREAT | 0600), -1);
  fs::permissions(top, fs::perms(0755));
  ExpectInChild([&] {
    BecomeOrdinaryUser();
    EXPECT_EQ(look(), "error " + std::to_string(EACCES));
  });
}

TEST_F(LogLock, MendsASetWhoseRemoverDied) {
  semctl(semget(ftok(log.c_str(), 11), 2, IPC_CREAT | 0666), kFree, SETVAL, 1);
  const LogFileLock lock(log);
  EXPECT_EQ(State(), "1 attached, 1 free") << "from a set with 0 attached, 1 free";
}

}  // namespace
}  // namespace test
