// What every side of the seam has to do alike. It runs against the side of this system, and against
// the one of macOS over a recording system.

#include <atomic>
#include <mutex>
#include <thread>

#include "platform/application.h"
#include "platform/bundle.h"
#include "platform/folders.h"
#include "platform/languages.h"
#include "platform/named_recursive_lock.h"
#include "tests/test_support.h"

namespace test {
namespace {

using platform::FolderDomain;
using Seam = TreeTest;

const std::string kNone = "none";

std::string Find(FolderDomain domain, platform::FolderType type, bool create) {
  return platform::FindFolder(domain, type, create).value_or(kNone);
}

TEST_F(Seam, FindsFoldersOfEitherDomainAndMakesThemOnlyWhenAsked) {
  constexpr FolderDomain kUser = FolderDomain::kUser, kLocal = FolderDomain::kLocal;
  const std::tuple<FolderDomain, platform::FolderType, std::string> rows[] = {
      {kUser, platform::kRootFolderType, home},
      {kUser, platform::kApplicationSupportFolderType, home / "Library/Application Support"},
      {kUser, platform::kFontsFolderType, home / "Library/Fonts"},
      {kUser, platform::kUtilitiesFolderType, home / "Applications/Utilities"},
      {kLocal, platform::kApplicationSupportFolderType, root / "Library/Application Support"},
      {kLocal, platform::kCachedDataFolderType, root / "Library/Caches"},
      {kLocal, platform::kUtilitiesFolderType, root / "Applications/Utilities"},
      {kLocal, platform::kRootFolderType, kNone},
      {kLocal, platform::kDesktopFolderType, kNone},
      {kUser, platform::kSystemFolderType, kNone},
      {kLocal, platform::FourCharCode("none"), kNone}};
  for (const auto& [domain, type, path] : rows) {
    SCOPED_TRACE((domain == kUser ? "the user's " : "the machine's ") + path);
    for (const fs::path& place : {home, root}) fs::remove_all(place);
    EXPECT_EQ(Find(domain, type, false), kNone);
    EXPECT_EQ(Find(domain, type, true), path);
    EXPECT_EQ(Find(domain, type, false), path);
  }
}

TEST_F(Seam, FindsNoFolderThatCannotBeMade) {
  fs::remove_all(root);
  WriteFile(root, "");
  EXPECT_EQ(Find(FolderDomain::kLocal, platform::kApplicationsFolderType, true), kNone);
}

TEST_F(Seam, GivesPathsOfAnyLength) {
  std::string deep = root;
  for (const std::size_t size : {240U, 241U, 255U, 511U, 1200U}) {
    while (deep.size() + sizeof "/Applications" - 1 < size) deep += deep.size() % 90 ? "x" : "/";
    setenv("WAKERLY_ROOT", deep.c_str(), 1);
    EXPECT_EQ(Find(FolderDomain::kLocal, platform::kApplicationsFolderType, true),
              deep + "/Applications");
  }
}

TEST_F(Seam, LaunchesNothingWhereThereIsNothing) {
  EXPECT_FALSE(platform::LaunchApplication(top / "none"));
  EXPECT_TRUE(platform::LaunchApplication("/bin/true"));
}

TEST_F(Seam, ReadsStringsOfDictionariesAndNothingElse) {
  const std::string dictionary =
      "<dict><key>K</key><string>&lt;\xC3\xA4&gt;</string><key>N</key><integer>5</integer></dict>";
  const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
      {"a string", "K", dictionary, "<\xC3\xA4>"},
      {"a number", "N", dictionary, kNone},
      {"another key", "k", dictionary, kNone},
      {"no dictionary", "K", "<array><string>K</string></array>", kNone},
      {"a broken file", "K", "<dict><key>K</key>", kNone}};
  const fs::path file = top / "Some.plist";
  for (const auto& [name, key, list, found] : rows) {
    SCOPED_TRACE(name);
    WriteFile(file, R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">)" +
                        list + "</plist>\n");
    EXPECT_EQ(platform::ReadPropertyListString(file, key).value_or(kNone), found);
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

TEST_F(Seam, LocksRecursivelyAndOtherThreadsOut) {
  // A lock that is never given back ends with this process.
  ExpectInChild([] {
    platform::NamedRecursiveLock lock("Some lock");
    std::atomic<bool> tries = false, entered = false;
    lock.lock();
    lock.lock();
    std::thread other([&] {
      tries = true;
      const std::lock_guard guard(lock);
      entered = true;
    });
    lock.unlock();
    Eventually("the other thread to start", [&] { return tries.load(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(entered) << "the lock was taken twice and given back once";
    lock.unlock();
    other.join();
  });
}

}  // namespace
}  // namespace test
