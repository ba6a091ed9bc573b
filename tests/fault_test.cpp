// Runs on a machine that refuses something: what is said, what is left behind, what is left alone.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/capability.h>
#include <sys/stat.h>

#include <set>

#include "esd/prefs/resource_locker.h"
#include "tests/refusals.h"
#include "tests/run_support.h"

namespace test {
namespace {

const std::string kPrefs = PrefsText({{"SomebodyElses", "1"}});

class FaultTest : public RunTest {
 protected:
  FaultTest() {
    fs::create_directories(support);
    WriteFile(prefs, kPrefs);
  }

  // The paths in the tree and the texts of its files, less what a run writes.
  std::string Tree() const {
    Lines tree;
    for (const auto& entry : fs::recursive_directory_iterator(top)) {
      if (written.contains(entry.path())) continue;
      tree.push_back(entry.path().string() + "\n" + ReadFile(entry.path()));
    }
    std::sort(tree.begin(), tree.end());
    return Text(tree);
  }

  const std::set<fs::path> written = {prefs, log, library_trace, notifier_trace};
  const Lines scheduled = {"-mode=scheduled"};
};

TEST_F(FaultTest, EndsWellWritesWhatItCanAndTouchesNothingElse) {
  const struct {
    const char* name;
    bool writes_log, writes_prefs;
    std::function<void()> prepare;
  } faults[] = {
      {"an almost full disk", true, false, [] { LimitFileSize(kPrefs.size() + 40); }},
      {"a read-only disk", false, false,
       [] {
         Refuse(EROFS, SYS_mkdir);
         Refuse(EROFS, SYS_openat, O_WRONLY | O_RDWR | O_CREAT);
       }},
      {"no semaphores for the log", false, true, [] { Refuse(ENOSPC, SYS_semget); }},
      {"no semaphores for the preferences", false, false,
       [] { Refuse(ENOSPC, SYS_openat, O_EXCL); }},
      {"no processes", true, true,
       [] {
         for (const int call : {SYS_clone, SYS_clone3, SYS_vfork, SYS_fork}) Refuse(EAGAIN, call);
       }},
  };
  InstallNotifier();
  InstallLibrary();
  Run();  // makes every folder
  const std::string before = Tree();
  for (const auto& fault : faults) {
    SCOPED_TRACE(fault.name);
    WriteFile(log, "");
    WriteFile(prefs, kPrefs);
    // The search for leaks cannot run where so much is refused.
    const Outcome outcome = Run(scheduled, {{"LSAN_OPTIONS", "detect_leaks=0"}}, fault.prepare);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(!outcome.log.empty(), fault.writes_log) << "the log: " << Text(outcome.log);
    const std::string found = ReadFile(prefs);
    EXPECT_EQ(found != kPrefs, fault.writes_prefs) << "the preferences: " << found;
    EXPECT_THAT(found, testing::HasSubstr("<SomebodyElses>1</SomebodyElses>"));
    EXPECT_EQ(Tree(), before) << "something else in the tree has changed";
    EXPECT_FALSE(esd::ResourceLocker(prefs, 0).Unlock(true)) << "the semaphore was left behind";
  }
}

TEST_F(FaultTest, LeavesAloneWhatItMayNotReadOrWrite) {
  WriteFile(log, "old\n");
  fs::permissions(prefs, fs::perms(0200));
  fs::permissions(log, fs::perms(0400));
  const auto obey = [] {
    for (const int right : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) prctl(PR_CAPBSET_DROP, right);
  };
  EXPECT_EQ(WaitFor(Start(scheduled, {}, obey)), 0);
  fs::permissions(prefs, fs::perms(0600));
  EXPECT_EQ(ReadFile(prefs), kPrefs);
  EXPECT_EQ(ReadFile(log), "old\n");
}

TEST_F(FaultTest, WritesThroughALinkAndIntoNothingElseThanAFile) {
  const std::tuple<const char*, bool, std::function<void(const fs::path&)>> objects[] = {
      {"a folder", false, [](const fs::path& path) { fs::create_directory(path); }},
      {"a FIFO", false, [](const fs::path& path) { mkfifo(path.c_str(), 0666); }},
      {"a device", false, [](const fs::path& path) { fs::create_symlink("/dev/null", path); }},
      {"a link", true, [&](const fs::path& path) { fs::create_symlink(top / "target", path); }},
  };
  for (const auto& [name, is_written, put] : objects) {
    for (const fs::path& path : {prefs, log}) {
      SCOPED_TRACE(name + (" in the place of " + path.string()));
      for (const fs::path& file : {prefs, log, top / "target"}) RemoveLog(file);
      MakeEmptyLog(log);
      fs::remove(path);
      put(path);
      const fs::file_type type = fs::symlink_status(path).type();
      EXPECT_EQ(Run(scheduled).status, 0);
      EXPECT_EQ(fs::symlink_status(path).type(), type) << "it became something else";
      EXPECT_EQ(!ReadFile(path).empty(), is_written) << "it holds: " << ReadFile(path);
      EXPECT_NE(ReadFile(path == prefs ? log : prefs), "") << "of the other file";
    }
  }
}

}  // namespace
}  // namespace test
