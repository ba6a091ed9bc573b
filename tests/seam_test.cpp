// What every side of the seam has to do alike. It runs against the side of this system, and against
// the one of macOS over a recording system.

#include <atomic>
#include <mutex>
#include <thread>

#include "platform/bundle.h"
#include "platform/folders.h"
#include "platform/languages.h"
#include "platform/named_recursive_lock.h"
#include "tests/test_support.h"

namespace test {
namespace {

using Seam = TreeTest;

const std::string kNone = "none";

TEST_F(Seam, ReadsStringsOfDictionariesAndNothingElse) {
  const std::string dictionary =
      "<dict><key>K</key><string>&lt;\xC3\xA4&gt;</string><key>N</key><integer>5</integer></dict>";
  const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
      {"a string", "K", dictionary, "<\xC3\xA4>"},
      {"a number", "N", dictionary, kNone},
      {"another key", "k", dictionary, kNone},
      {"no dictionary", "K", "<array><string>K</string></array>", kNone},
      {"a broken file", "K", "<dict><key>K</key>", kNone}};
  for (const auto& [name, key, list, found] : rows) {
    WriteFile(top / "Some.plist",
              R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">)" + list + "</plist>");
    EXPECT_EQ(platform::ReadPropertyListString(top / "Some.plist", key).value_or(kNone), found)
        << name;
  }
  EXPECT_FALSE(platform::ReadPropertyListString(top / "none", "K"));
  EXPECT_FALSE(platform::ReadPropertyListString(top, "K"));
}

// GNUstep knows the languages that the program was started with, and adds its own.
TEST_F(Seam, KnowsTheLanguagesInTheirOrderAndTheLocale) {
  setenv("LANGUAGE", "ar:sv", 1);
  setenv("LC_ALL", "ar_MA.UTF-8", 1);
  Lines languages = platform::PreferredLanguages();
  languages.resize(2);
  EXPECT_EQ(Text(languages), "ar\nsv\n");
  EXPECT_EQ(platform::CurrentLocaleIdentifier(), "ar_MA");
}

TEST_F(Seam, KnowsTheProgramsPlaceAndPlainPaths) {
  EXPECT_EQ(platform::MainExecutablePath(), fs::read_symlink("/proc/self/exe"));
  EXPECT_EQ(platform::StandardizePath("/a//./b/../c/"), "/a/c");
  EXPECT_EQ(platform::StandardizePath("/"), "/");
  EXPECT_EQ(platform::HomeFolder().substr(0, 1), "/");
}

// A lock that is never given back ends with the child process.
TEST_F(Seam, LocksRecursivelyAndOtherThreadsOut) {
  ExpectInChild([] {
    platform::NamedRecursiveLock lock("Some lock");
    std::atomic<bool> entered = false;
    lock.lock();
    lock.lock();
    lock.unlock();
    std::thread other([&] {
      const std::lock_guard guard(lock);
      entered = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(entered) << "the lock was taken twice and given back once";
    lock.unlock();
    other.join();
  });
}

}  // namespace
}  // namespace test
