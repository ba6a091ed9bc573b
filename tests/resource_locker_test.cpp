#include "esd/prefs/resource_locker.h"

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

TEST_F(ResourceLock, IsHeldByOneObjectUnderTheDigestOfItsResource) {
  EXPECT_EQ(SemaphoreFile(""), "/dev/shm/sem.1B2M2Y8AsgTpgAmY7PhCfg==");  // RFC 1321, appendix 5
  EXPECT_EQ(SemaphoreFile("abc"), "/dev/shm/sem.kAFQmDzST7DWlj99KOF_cg==");
  EXPECT_TRUE(lock.Lock());
  EXPECT_TRUE(test::fs::exists(semaphore));
  EXPECT_TRUE(ResourceLocker(path + "x", 3000).Lock());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(other.Lock());
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
  EXPECT_THROW(lock.Lock(), esd::resource_lock_fail);
  EXPECT_THROW(other.Unlock(false), esd::no_resource_lock);
  EXPECT_TRUE(other.Unlock(true));
  EXPECT_FALSE(lock.Unlock(false));
  EXPECT_TRUE(ResourceLocker(path, 3000).Lock());
  EXPECT_FALSE(test::fs::exists(semaphore));
}

TEST_F(ResourceLock, HoldsBackTheSignalsThatEndASession) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    const auto body = [&] {
      ResourceLocker second(path + "x", 3000);
      raise(lock.Lock() && second.Lock() ? signal : SIGKILL);
      second.Unlock(false);
      test::WriteFile(path, "alive");
      lock.Unlock(false);
      return 0;
    };
    EXPECT_EQ(test::InChild(body), 128 + signal);
    EXPECT_TRUE(test::fs::remove(path));
    EXPECT_FALSE(test::fs::exists(semaphore));
  }
}

}  // namespace
