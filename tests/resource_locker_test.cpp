#include "esd/prefs/resource_locker.h"

#include <gmock/gmock.h>
#include <semaphore.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include "esd/prefs/resource_lock_error.h"
#include "esd/util/base64.h"
#include "platform/md5.h"
#include "platform/semaphore_name.h"
#include "tests/test_support.h"

namespace {

using esd::ResourceLocker, testing::ThrowsMessage;

std::string SemaphoreOf(const std::string& resource) {
  const auto digest = platform::Md5Digest(resource);
  return platform::SemaphoreName(esd::EncodeBase64(digest.data(), digest.size()));
}

struct ResourceLock : test::TreeTest {
  ~ResourceLock() override { sem_unlink(semaphore.c_str()); }
  bool HasSemaphore() const {
    sem_t* const found = sem_open(semaphore.c_str(), 0);
    return found != SEM_FAILED && sem_close(found) == 0;
  }
  const std::string path = top / "prefs.dat", semaphore = SemaphoreOf(path);
  ResourceLocker lock{path, 3000}, other{path, 3000};
};

TEST_F(ResourceLock, IsASemaphoreUnderTheDigestOfItsResource) {
  EXPECT_TRUE(lock.Lock());
  EXPECT_TRUE(HasSemaphore()) << semaphore;
  EXPECT_TRUE(lock.Unlock(false));
  EXPECT_FALSE(HasSemaphore()) << semaphore;
}

TEST_F(ResourceLock, IsHeldByOneObjectUntilItsEnd) {
  {
    ResourceLocker holder(path, 3000);
    EXPECT_TRUE(holder.Lock());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(other.Lock());
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    // A hundred attempts with ten milliseconds between them.
    EXPECT_GE(seconds.count(), 0.9) << "seconds that it tried";
    EXPECT_LE(seconds.count(), 3.0) << "seconds that it tried";
  }
  EXPECT_TRUE(other.Lock());
}

TEST_F(ResourceLock, TellsWhichMisuseItWas) {
  EXPECT_THAT([&] { lock.Unlock(false); },
              ThrowsMessage<esd::no_resource_lock>("This object is not locking an item"));
  EXPECT_TRUE(lock.Lock());
  EXPECT_THAT([&] { lock.Lock(); },
              ThrowsMessage<esd::resource_lock_fail>("A resource is already being locked"));
}

TEST_F(ResourceLock, CanBeTakenAwayFromItsHolder) {
  EXPECT_FALSE(other.Unlock(true)) << "of a lock that nobody holds";
  EXPECT_TRUE(lock.Lock());
  EXPECT_TRUE(other.Unlock(true));
  EXPECT_FALSE(lock.Unlock(false));
  EXPECT_TRUE(lock.IsLocked()) << "in its own eyes";
  EXPECT_TRUE(other.Lock());
}

TEST_F(ResourceLock, HoldsBackWhatEndsAProcessUntilTheLastOneIsGivenBack) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGXCPU, SIGXFSZ, SIGALRM, SIGVTALRM,
                           SIGPROF, SIGUSR1, SIGUSR2}) {
    SCOPED_TRACE(strsignal(signal));
    const auto body = [&] {
      const rlimit no_core{0, 0};
      setrlimit(RLIMIT_CORE, &no_core);
      ResourceLocker second(path + "x", 3000);
      if (!lock.Lock() || !second.Lock()) return 1;
      raise(signal);
      lock.Unlock(false);
      test::WriteFile(path, "");  // still running, with one of two locks
      second.Unlock(false);
      return 0;
    };
    EXPECT_EQ(test::InChild(body), 128 + signal) << "the signal ends the process";
    EXPECT_TRUE(test::fs::remove(path)) << "it did so before the last lock was given back";
    EXPECT_FALSE(HasSemaphore());
  }
}

// The handler removes the semaphore that a process left behind: an attempt made after it succeeds.
TEST_F(ResourceLock, LetsSignalsThroughBetweenItsAttempts) {
  EXPECT_EQ(test::InChild([&] { return other.Lock() ? 0 : 1; }), 0);
  test::ExpectInChild([&] {
    static const char* held;
    held = semaphore.c_str();
    signal(SIGTERM, [](int) { sem_unlink(held); });
    signal(SIGALRM, [](int) { raise(SIGTERM); });
    ualarm(50'000, 0);
    EXPECT_TRUE(lock.Lock()) << "a signal was held back during all attempts";
  });
}

}  // namespace
