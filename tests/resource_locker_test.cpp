#include "esd/prefs/resource_locker.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <random>

#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/resource_lock_error.h"
#include "esd/util/base64.h"
#include "platform/md5.h"
#include "tests/test_support.h"

namespace {

using esd::ResourceLocker;

std::string SemaphoreFile(const std::string& resource) {
  const auto digest = platform::Md5Digest(resource);
  std::string name = esd::EncodeBase64(digest.data(), digest.size());
  for (char& c : name) c = c == '/' ? '_' : c;
  return "/dev/shm/sem." + name;
}

template <typename Error>
auto Fails(const std::string& resource, const char* what) {
  return testing::Throws<Error>(
      testing::AllOf(testing::Property(&Error::resource, resource),
                     testing::Property(&Error::what, testing::StrEq(what))));
}

struct ResourceLock : test::TreeTest {
  ~ResourceLock() override { unlink(semaphore.c_str()); }
  const std::string path = top / "prefs.dat", semaphore = SemaphoreFile(path);
  ResourceLocker lock{path, 3000}, other{path, 3000};
};

TEST_F(ResourceLock, IsNamedByTheDigestOfItsResource) {
  EXPECT_EQ(SemaphoreFile(""), "/dev/shm/sem.1B2M2Y8AsgTpgAmY7PhCfg==");  // RFC 1321, appendix 5
  EXPECT_EQ(SemaphoreFile("abc"), "/dev/shm/sem.kAFQmDzST7DWlj99KOF_cg==");
  EXPECT_TRUE(lock.Lock());
  EXPECT_TRUE(test::fs::exists(semaphore));
  EXPECT_TRUE(lock.Unlock(false));
  EXPECT_FALSE(test::fs::exists(semaphore));
}

TEST_F(ResourceLock, IsHeldByOneObjectAndTellsItsMisuse) {
  ResourceLocker elsewhere(path + "x", 3000);
  EXPECT_TRUE(lock.Lock());
  EXPECT_TRUE(elsewhere.Lock());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(other.Lock());
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
  EXPECT_THAT([&] { lock.Lock(); },
              Fails<esd::resource_lock_fail>(path, "A resource is already being locked"));
  EXPECT_THAT(
      [&] { other.Unlock(false); },
      Fails<esd::no_resource_lock>("Resource unknown", "This object is not locking an item"));
  EXPECT_TRUE(other.Unlock(true));
  EXPECT_FALSE(lock.Unlock(false));
  EXPECT_TRUE(lock.IsLocked());
  EXPECT_TRUE(ResourceLocker(path, 3000).Lock());
  EXPECT_TRUE(other.Lock());
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

TEST_F(ResourceLock, LeavesNeitherSemaphoreNorTornFileWhenTerminatedAtAnyMoment) {
  esd::PrefsWriter store(path, "Prefs");
  ASSERT_TRUE(store.SetPref("Filler", std::string(20000, 'x')));
  const std::string start = test::ReadFile(path).substr(0, 20000);
  store.SetLockPolicy(&lock);
  const auto body = [&] {
    for (int number = 0; store.SetPref("Number", number);) ++number;
    return 1;
  };
  std::minstd_rand random(1);
  for (int i = 0; i < 200; ++i) {
    const int child = test::StartChild(body);
    usleep(static_cast<useconds_t>(random() % 4000));
    kill(child, SIGTERM);
    ASSERT_EQ(test::WaitFor(child), 128 + SIGTERM);
    ASSERT_FALSE(test::fs::exists(semaphore));
    const std::string text = test::ReadFile(path);
    ASSERT_TRUE(text.starts_with(start));
    ASSERT_TRUE(text.ends_with("</Prefs>\n")) << text.size();
  }
}

}  // namespace
