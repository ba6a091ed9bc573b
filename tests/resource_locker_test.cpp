#include "esd/prefs/resource_locker.h"

#include <gmock/gmock.h>
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

using esd::ResourceLocker;

std::string SemaphoreFile(const std::string& resource) {
  const auto digest = platform::Md5Digest(resource);
  const std::string name = esd::EncodeBase64(digest.data(), digest.size());
  return "/dev/shm/sem." + platform::SemaphoreName(name).substr(1);
}

struct ResourceLock : test::TreeTest {
  ~ResourceLock() override { unlink(semaphore.c_str()); }
  const std::string path = top / "prefs.dat", semaphore = SemaphoreFile(path);
  ResourceLocker lock{path, 3000}, other{path, 3000};
};

TEST_F(ResourceLock, IsAPrivateSemaphoreUnderTheDigestOfItsResource) {
  EXPECT_EQ(SemaphoreFile(""), "/dev/shm/sem.1B2M2Y8AsgTpgAmY7PhCfg==");  // RFC 1321, appendix 5
  EXPECT_EQ(SemaphoreFile("abc"), "/dev/shm/sem.kAFQmDzST7DWlj99KOF_cg==");
  EXPECT_TRUE(lock.Lock());
  EXPECT_THAT(test::Rights(semaphore), testing::StartsWith("mode 0700,"));
  EXPECT_TRUE(lock.Unlock(false));
  EXPECT_EQ(test::Rights(semaphore), "nothing");
}

TEST_F(ResourceLock, IsHeldByOneObjectUntilItsEnd) {
  {
    ResourceLocker holder(path, 3000);
    EXPECT_TRUE(holder.Lock());
    EXPECT_TRUE(ResourceLocker(path + "x", 3000).Lock()) << "of another resource";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(other.Lock());
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    // A hundred attempts with ten milliseconds between them.
    EXPECT_GE(seconds.count(), 0.9) << "seconds that it tried";
    EXPECT_LE(seconds.count(), 3.0) << "seconds that it tried";
    EXPECT_FALSE(other.IsLocked());
  }
  EXPECT_TRUE(other.Lock());
}

TEST_F(ResourceLock, TellsWhichMisuseItWas) {
  try {
    lock.Unlock(false);
    ADD_FAILURE() << "a lock that is not held was given back";
  } catch (const esd::no_resource_lock& error) {
    EXPECT_STREQ(error.what(), "This object is not locking an item");
    EXPECT_EQ(error.resource(), "Resource unknown");
  }
  EXPECT_TRUE(lock.Lock());
  try {
    lock.Lock();
    ADD_FAILURE() << "a lock was taken twice";
  } catch (const esd::resource_lock_fail& error) {
    EXPECT_STREQ(error.what(), "A resource is already being locked");
    EXPECT_EQ(error.resource(), path);
  }
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
      const rlimit no_core = {0, 0};
      setrlimit(RLIMIT_CORE, &no_core);
      ResourceLocker second(path + "x", 3000);
      if (!lock.Lock() || !second.Lock()) return 1;
      raise(signal);
      lock.Unlock(false);
      test::WriteFile(path, "with one of two locks");
      second.Unlock(false);
      test::WriteFile(path, "without a lock");
      return 0;
    };
    EXPECT_EQ(test::InChild(body), 128 + signal) << "the signal ends the process";
    EXPECT_EQ(test::ReadFile(path), "with one of two locks") << "what the process came to";
    EXPECT_EQ(test::Rights(semaphore), "nothing");
    test::fs::remove(path);
  }
}

// The handler removes the semaphore that a process left behind: an attempt made after it succeeds.
TEST_F(ResourceLock, LetsSignalsThroughBetweenItsAttempts) {
  EXPECT_EQ(test::InChild([&] { return other.Lock() ? 0 : 1; }), 0);
  test::ExpectInChild([&] {
    static const char* held;
    held = semaphore.c_str();
    signal(SIGTERM, [](int) { unlink(held); });
    signal(SIGALRM, [](int) { raise(SIGTERM); });
    ualarm(50'000, 0);
    EXPECT_TRUE(lock.Lock()) << "a signal was held back during all attempts";
  });
}

}  // namespace
