// What a run starts with: whom it acts for, its standard streams, which folders and stamps it
// trusts, and what it says where it has no log. An ordinary user sees less of it than root.

#include <gmock/gmock.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "driver/home_owner.h"
#include "esd/prefs/resource_locker.h"
#include "esd/prefs/updater_folders.h"
#include "tests/refusals.h"
#include "tests/run_support.h"

namespace test {
namespace {

using StartTest = RunTest;
using testing::HasSubstr;

// As proc(5) writes real, effective, saved and file system's ids, and the further groups.
std::string Identity() {
  Lines lines = ReadLines("/proc/self/status");
  std::erase_if(lines, [](const std::string& line) {
    return !line.starts_with("Uid") && !line.starts_with("Gid") && !line.starts_with("Groups");
  });
  return Text(lines);
}

TEST_F(StartTest, RootBecomesTheOwnerOfItsHomeFolder) {
  constexpr gid_t kHomeGroup = 54322, kFormerGroup = 4321;
  const struct {
    const char* home;
    uid_t owner;
    const char* identity;  // afterwards; null where it stays
    std::optional<int> refused = {};
  } rows[] = {
      {"nobody's", kOrdinaryUser, "Uid:(\t65534){4}\nGid:(\t65534){4}\nGroups:\t65534 \n"},
      {"a user's without a password entry", 54321,
       "Uid:(\t54321){4}\nGid:(\t54322){4}\nGroups:\t54322 \n"},
      {"root's own", 0, nullptr},
      {"nobody's, without the right to change the user", kOrdinaryUser, nullptr, SYS_setuid}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string("the home folder is ") + row.home);
    const bool changes = chown(home.c_str(), row.owner, kHomeGroup) == 0 && row.identity != nullptr;
    ExpectInChild([&] {
      setgroups(1, &kFormerGroup);
      if (row.refused) Refuse(EPERM, *row.refused);
      const std::string before = Identity();
      EXPECT_EQ(wakerly::BecomeHomeOwner().value_or(0), changes ? row.owner : 0);
      EXPECT_THAT(Identity(), testing::MatchesRegex(changes ? row.identity : before));
    });
  }
}

TEST_F(StartTest, RootLogsAndStoresAsTheOwnerOfItsHomeFolder) {
  chmod(top.c_str(), 0755);
  const bool changes = geteuid() == 0 && chown(home.c_str(), kOrdinaryUser, kOrdinaryUser) == 0;
  for (const auto& entry : fs::recursive_directory_iterator(home)) {
    if (changes) chown(entry.path().c_str(), kOrdinaryUser, kOrdinaryUser);
  }
  EXPECT_THAT(Text(Messages(Run().log)),
              HasSubstr(changes ? "Wakerly : Started as root with another user's home folder; now "
                                  "running as uid  = 65534\n"
                                : ""));
  const std::string owner = std::to_string(changes ? kOrdinaryUser : geteuid());
  EXPECT_THAT(Rights(prefs), HasSubstr("owner " + owner + ","));
  WriteFile(log, "");
  WriteFile(prefs, PrefsText({{"LogLevel", "1"}}));
  EXPECT_EQ(Text(LinesAfterHeader(Run().log)), Text(FirstLines())) << "at LogLevel 1";
}

// Else the log would get the number of standard error, and what a library prints there.
TEST_F(StartTest, ClosedStandardStreamsAreDevNull) {
  InstallLibrary();
  const pid_t run = Start({}, {{"KDUPDATER_CALLBACK", "none"}}, [] {
    for (const int stream : {0, 1, 2}) close(stream);
  });
  Eventually("the run to wait for its library",
             [&] { return ReadFile(log).find("inside waitForCFUCallBack.") != std::string::npos; });
  const fs::path streams = "/proc/" + std::to_string(run) + "/fd";
  for (const char* stream : {"0", "1", "2"}) {
    EXPECT_EQ(fs::read_symlink(streams / stream), "/dev/null") << stream;
  }
  kill(run, SIGTERM);
}

TEST_F(StartTest, AStampThatEndsWithin4096BytesCounts) {
  for (const std::size_t size : {4096U, 4097U}) {
    WriteFile(prefs, PrefsText({{"uninstallts", "former"}}));
    WriteFile(inventory / "uninstallts", std::string(size, 'w'));
    Run();
    const bool counts = ReadFile(prefs).find(">former<") == std::string::npos;
    EXPECT_EQ(counts, size == 4096) << "a stamp of " << size << " bytes";
  }
}

TEST_F(StartTest, ANewStampRemovesNoFolderWhereThePreferencesBelong) {
  WriteFile(prefs / "Some file", "Some text");
  WriteFile(inventory / "uninstallts", "new");
  Run();
  EXPECT_EQ(ReadFile(prefs / "Some file"), "Some text") << "in " << prefs;
}

// Where the home folder cannot be used.
struct TemporaryFolder : TreeTest {
  TemporaryFolder() {
    WriteFile(home / "Library", "in the place of a folder");
    fs::create_directories(temporary);
  }
  static std::string Found() {
    std::string folder;
    return esd::GetUpdaterPrefsFolder(folder) ? folder : "none";
  }
  const fs::path temporary = root / "tmp", maker = temporary / "Vantre",
                 updater = maker / "OrlanUpdater", version = updater / "1.0";
};

TEST_F(TemporaryFolder, IsMadeForItsUserAlone) {
  chmod(temporary.c_str(), 03777);
  EXPECT_EQ(Found(), version);
  for (const fs::path& folder : {maker, updater, version}) {
    EXPECT_THAT(Rights(folder), HasSubstr("mode 0700,")) << folder;
  }
}

TEST_F(TemporaryFolder, IsNotTrustedWhereOthersCouldHaveLaidIt) {
  for (const fs::path& folder : {maker, updater, version}) {
    ASSERT_EQ(Found(), version);
    for (const mode_t mode : {0775U, 0757U}) {
      chmod(folder.c_str(), mode);
      EXPECT_EQ(Found(), "none") << folder << " has " << Rights(folder);
    }
    chmod(folder.c_str(), 0755);
    chown(folder.c_str(), kOrdinaryUser, kOrdinaryUser);
    EXPECT_EQ(Found(), geteuid() == 0 ? "none" : version) << folder << " has " << Rights(folder);
    fs::remove_all(maker);
  }
  fs::create_directories(top / "own/OrlanUpdater/1.0");
  fs::create_directory_symlink(top / "own", maker);
  EXPECT_EQ(Found(), "none") << "which a link leads to";
}

// What it says on standard error.
struct ReportTest : RunTest {
  ReportTest() { SetLevel("2"); }

  void SetLevel(const std::string& level) const {
    fs::create_directories(support);
    WriteFile(prefs, PrefsText({{"StartupLogFile", log}, {"LogLevel", level}}));
  }

  // What a run says that does its work otherwise.
  std::string Said(const std::function<void()>& prepare = {}) const {
    const auto redirect = [&] {
      if (freopen(said.c_str(), "w", stderr) == nullptr) _exit(126);
      if (prepare) prepare();
    };
    EXPECT_EQ(Run({}, {{"LSAN_OPTIONS", "detect_leaks=0"}}, redirect).status, 0);
    return ReadFile(said);
  }
  const fs::path said = top / "stderr";
};

TEST_F(ReportTest, ALockIsNamedWithTheCommandThatClearsIt) {
  esd::ResourceLocker other(prefs, 0);
  ASSERT_TRUE(other.Lock());
  const std::string line = Said();
  EXPECT_THAT(line, HasSubstr("killed: " + prefs.string() + ", semaphore /"));
  EXPECT_THAT(line, HasSubstr("remove it with: wakerlyctl lock --clear\n"));
  const std::string command = "'" WAKERLYCTL "' lock --clear --yes";
  EXPECT_EQ(std::system(command.c_str()), 0) << line;
  EXPECT_EQ(Said(), "") << "after the command";
  SetLevel("0");
  EXPECT_EQ(Said(), "") << "where no log is wanted";
}

TEST_F(ReportTest, EachOtherReasonIsSaidInOneLineWithItsFile) {
  const std::string unwritable = log.string() + " cannot be written: ";
  const std::pair<std::string, std::function<void()>> rows[] = {
      {unwritable + "Is a directory", [&] { fs::create_directory(log); }},
      {unwritable + "not a line",
       [&] { WriteFile(log, std::string(5000, 'x')), LimitFileSize(4096); }},
      {"LogLevel is no number: \"lo?ud\" in " + prefs.string(), [&] { SetLevel("lo\nud"); }},
      {"there is no folder for VantreUpdaterPrefs.dat, neither",
       [&] { setenv("HOME", "/dev/null", 1), WriteFile(root / "tmp", ""); }}};
  for (const auto& [reason, prepare] : rows) {
    RemoveLog(log);
    const std::string line = Said(prepare);
    EXPECT_THAT(line, HasSubstr("]: no log for this run: " + reason));
    EXPECT_EQ(line.find('\n'), line.size() - 1) << "more than a line: " << line;
  }
}

TEST_F(ReportTest, ABrokenStandardErrorEndsNoRun) {
  SetLevel("loud");
  const auto prepare = [] {
    int ends[2];
    if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0 || close(ends[0]) != 0) _exit(126);
    signal(SIGPIPE, SIG_DFL);
  };
  EXPECT_EQ(Run({}, {}, prepare).status, 0);
}

}  // namespace
}  // namespace test
