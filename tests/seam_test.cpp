// What every side of the seam has to do alike. It runs against the side of this system, and against
// the one of macOS over a recording system.

#include <fcntl.h>
#include <semaphore.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "platform/bundle.h"
#include "platform/file_attributes.h"
#include "platform/folders.h"
#include "platform/md5.h"
#include "platform/named_recursive_lock.h"
#include "platform/processes.h"
#include "platform/property_list.h"
#include "platform/semaphore_name.h"
#include "platform/thread_id.h"
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

TEST_F(Seam, ReadsArraysOfStringsAndIntegersOfInnerDictionaries) {
  const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
      {"both", "<string>a b</string><string/>", "<integer>7</integer>", "[a b][] 7"},
      {"nothing in the array", "", "<integer>-1</integer>", " -1"},
      {"a number among the strings", "<string>a</string><integer>1</integer>", "<string>7</string>",
       "none none"},
      {"a truth", "", "<true/>", " none"},
      {"a fraction", "", "<real>2.5</real>", " none"}};
  const std::string list = top / "Some.plist";
  for (const auto& [name, strings, number, found] : rows) {
    WriteFile(list,
              R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict><key>A</key>)"
              "<array>" +
                  strings + "</array><key>D</key><dict><key>N</key>" + number +
                  "</dict></dict></plist>");
    const auto array = platform::ReadPropertyListStrings(list, "A");
    const auto integer = platform::ReadPropertyListInteger(list, "D", "N");
    std::string text = array ? "" : kNone;
    for (const std::string& string : array.value_or(Lines())) text += "[" + string + "]";
    text += " " + (integer ? std::to_string(*integer) : kNone);
    EXPECT_EQ(text, found) << name;
    EXPECT_FALSE(platform::ReadPropertyListStrings(list, "D")) << name;
    EXPECT_FALSE(platform::ReadPropertyListInteger(list, "A", "N")) << name;
  }
}

TEST_F(Seam, KnowsTheProgramsPlaceAndPlainPaths) {
  EXPECT_TRUE(
      fs::equivalent(platform::MainExecutablePath(), testing::internal::GetArgvs().front()));
  EXPECT_EQ(platform::MainExecutablePath().substr(0, 1), "/");
  EXPECT_EQ(platform::StandardizePath("/a//./b/../c/"), "/a/c");
  EXPECT_EQ(platform::StandardizePath("/"), "/");
  EXPECT_EQ(platform::HomeFolder().substr(0, 1), "/");
}

TEST_F(Seam, TellsALockedFileFromALinkToItAndUnlocksIt) {
  const std::string file = top / "file", link = top / "link";
  WriteFile(file, "");
  fs::create_symlink(file, link);
  // Not every user may, nor has every file system such a thing.
  const bool locked =
      std::system(("(chattr +i " + file + " || chflags uchg " + file + ") 2>/dev/null").c_str()) ==
      0;
  EXPECT_EQ(platform::IsLocked(file), locked);
  EXPECT_FALSE(platform::IsLocked(link));
  EXPECT_TRUE(platform::ClearLocked(link));
  EXPECT_EQ(platform::IsLocked(file), locked) << "after its link was unlocked";
  EXPECT_TRUE(platform::ClearLocked(file));
  EXPECT_FALSE(platform::IsLocked(file));
}

// The digest is that of RFC 1321.
TEST_F(Seam, DigestsBytes) {
  const auto digest = platform::Md5Digest("abc");
  EXPECT_EQ(std::string(digest.begin(), digest.end()),
            "\x90\x01\x50\x98\x3C\xD2\x4F\xB0\xD6\x96\x3F\x7D\x28\xE1\x7F\x72");
}

TEST_F(Seam, NumbersThreads) {
  const auto own = platform::CurrentThreadId();
  std::thread([&] { EXPECT_NE(platform::CurrentThreadId(), own); }).join();
  EXPECT_EQ(platform::CurrentThreadId(), own);
}

TEST_F(Seam, FindsTheProcessesOfAProgramButNotThisOne) {
  const pid_t child = StartChild([] { return execl("/bin/sleep", "sleep", "60", nullptr); });
  const auto find = [&] {
    const auto found = platform::FindProcesses("sleep");
    return std::find_if(found.begin(), found.end(), [&](const platform::Process& process) {
             return process.id == child && process.uid == geteuid() &&
                    process.executable.ends_with("/sleep");
           }) != found.end();
  };
  EXPECT_TRUE(Eventually("the process to be found", find));
  kill(child, SIGKILL);
  WaitFor(child);
  EXPECT_FALSE(find()) << "after its end";
  const std::string own = platform::MainExecutablePath();
  for (const auto& process : platform::FindProcesses(own.substr(own.rfind('/') + 1))) {
    EXPECT_NE(process.id, getpid());
  }
}

// One system does not tell where a semaphore comes from.
TEST_F(Seam, NamesSemaphoresAndTellsWhoMadeOneAndHasIt) {
  const std::string name = platform::SemaphoreName("wakerly-seam-" + std::to_string(getpid()));
  EXPECT_EQ(platform::FindSemaphoreOrigin(name), std::nullopt) << "before there is one";
  sem_t* const made = sem_open(name.c_str(), O_CREAT | O_EXCL, 0600, 1);
  ASSERT_NE(made, SEM_FAILED);
  EXPECT_TRUE(platform::MayHaveSemaphoreOpen(getpid(), name));
  sem_close(made);
  const auto origin = platform::FindSemaphoreOrigin(name);
  EXPECT_EQ(sem_unlink(name.c_str()), 0);
  if (!origin) return;
  EXPECT_EQ(origin->uid, geteuid());
  EXPECT_NEAR(static_cast<double>(origin->seconds), static_cast<double>(std::time(nullptr)), 2);
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
