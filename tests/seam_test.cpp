// What every side of the seam has to do alike. It runs against the side of this system, and against
// the one of macOS over a recording system.

#include <future>

#include "platform/application.h"
#include "platform/bundle.h"
#include "platform/folders.h"
#include "platform/languages.h"
#include "platform/named_recursive_lock.h"
#include "tests/test_support.h"

namespace {

using platform::FolderDomain;
using Seam = test::TreeTest;

std::string Find(FolderDomain domain, platform::FolderType type, bool create) {
  return platform::FindFolder(domain, type, create).value_or("none");
}

TEST_F(Seam, FindsFoldersOfEitherDomainAndMakesThemOnlyWhenAsked) {
  constexpr FolderDomain kUser = FolderDomain::kUser, kLocal = FolderDomain::kLocal;
  const std::tuple<FolderDomain, platform::FolderType, std::string> cases[] = {
      {kUser, platform::kRootFolderType, home},
      {kUser, platform::kApplicationSupportFolderType, home / "Library/Application Support"},
      {kLocal, platform::kApplicationSupportFolderType, root / "Library/Application Support"},
      {kLocal, platform::kUtilitiesFolderType, root / "Applications/Utilities"},
      {kLocal, platform::kRootFolderType, "none"},
      {kLocal, platform::FourCharCode("none"), "none"}};
  for (const auto& [domain, type, path] : cases) {
    test::fs::remove_all(home);
    test::fs::remove_all(root);
    EXPECT_EQ(Find(domain, type, false), "none") << path;
    EXPECT_EQ(Find(domain, type, true), path);
    EXPECT_EQ(Find(domain, type, false), path);
  }
  test::fs::remove_all(root);
  test::WriteFile(root, "");
  EXPECT_EQ(Find(kLocal, platform::kApplicationsFolderType, true), "none");
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

TEST_F(Seam, ReadsStringsAndNothingElseOfDictionariesAndNothingElse) {
  const auto read = [this](const std::string& key, const std::string& content) {
    const test::fs::path list = top / "Some.plist";
    test::WriteFile(list, R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">)" + content +
                              "</plist>\n");
    return platform::ReadPropertyListString(list, key).value_or("none");
  };
  const std::string dictionary =
      "<dict><key>K</key><string>&lt;\xC3\xA4&gt;</string><key>N</key><integer>5</integer></dict>";
  EXPECT_EQ(read("K", dictionary), "<\xC3\xA4>");
  EXPECT_EQ(read("N", dictionary), "none");
  EXPECT_EQ(read("k", dictionary), "none");
  EXPECT_EQ(read("K", "<array><string>K</string></array>"), "none");
  EXPECT_EQ(read("K", "<dict><key>K</key>"), "none");
  EXPECT_FALSE(platform::ReadPropertyListString(top / "none", "K"));
  EXPECT_FALSE(platform::ReadPropertyListString(top, "K"));
}

TEST_F(Seam, KnowsTheLanguagesInTheirOrderAndTheLocale) {
  setenv("LANGUAGE", "ar:sv", 1);
  setenv("LC_ALL", "ar_MA.UTF-8", 1);
  const std::vector<std::string> languages = platform::PreferredLanguages();
  ASSERT_GE(languages.size(), 2U);
  EXPECT_EQ(languages[0] + languages[1], "arsv");
  EXPECT_EQ(platform::CurrentLocaleIdentifier(), "ar_MA");
}

TEST_F(Seam, KnowsTheProgramsPlaceAndPlainPaths) {
  EXPECT_EQ(platform::MainExecutablePath(), test::fs::read_symlink("/proc/self/exe"));
  EXPECT_EQ(platform::StandardizePath("/a//./b/../c/"), "/a/c");
  EXPECT_EQ(platform::StandardizePath("/"), "/");
  EXPECT_EQ(platform::HomeFolder().front(), '/');
}

TEST_F(Seam, LocksRecursivelyAndOtherThreadsOut) {
  platform::NamedRecursiveLock lock("Some lock");
  std::string order;
  lock.lock();
  lock.lock();
  const auto other = std::async(std::launch::async, [&] {
    const std::lock_guard guard(lock);
    order += "other";
  });
  lock.unlock();
  EXPECT_EQ(other.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  order += "own ";
  lock.unlock();
  other.wait();
  EXPECT_EQ(order, "own other");
}

}  // namespace
