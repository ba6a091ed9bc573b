// What a run starts with: whom it acts for, its standard streams, and which folders it trusts. Only
// root can make other users' folders; an ordinary user sees less.

#include <gmock/gmock.h>
#include <grp.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "esd/prefs/updater_folders.h"
#include "tests/run_support.h"

namespace test {
namespace {

constexpr uid_t kNobody = 65534, kUnnamedUser = 54321;
constexpr gid_t kHomeGroup = 54322, kFormerGroup = 4321;

// As proc(5) writes real, effective, saved and file system's ids, and the further groups.
std::string Identity(uid_t user, gid_t group, gid_t further) {
  const auto four = [](gid_t id) {
    const std::string one = "\t" + std::to_string(id);
    return one + one + one + one;
  };
  return "Uid:" + four(user) + "\nGid:" + four(group) + "\nGroups:\t" + std::to_string(further) +
         " \n";
}

struct Origin {
  const char* home;
  uid_t owner;
  std::string identity;  // of the run
  bool changes = false;
  int without_right = -1;
};

struct RootTest : RunTest {
  RootTest() { InstallLibrary(); }

  // Lets a run wait for its library, looks at it, and ends it.
  void LookAtARun(const std::function<void()>& prepare,
                  const std::function<void(const fs::path& process)>& look) const {
    const pid_t run = Start({}, {{"KDUPDATER_CALLBACK", "none"}}, prepare);
    Eventually("the run to wait for its library", [&] {
      return ReadFile(log).find("inside waitForCFUCallBack.") != std::string::npos;
    });
    look("/proc/" + std::to_string(run));
    kill(run, SIGTERM);
    WaitFor(run);
  }

  void GiveHome(uid_t owner) const {
    for (const auto& entry : fs::recursive_directory_iterator(top)) {
      if (geteuid() == 0) lchown(entry.path().c_str(), owner, kHomeGroup);
    }
  }
};

TEST_F(RootTest, ARunOfRootActsForTheOwnerOfItsHomeFolder) {
  chmod(top.c_str(), 0777);
  const std::string stays = Identity(0, 0, kFormerGroup);
  std::vector<Origin> origins = {
      {"nobody's", kNobody, Identity(kNobody, kNobody, kNobody), true},
      {"a user's without a password entry", kUnnamedUser,
       Identity(kUnnamedUser, kHomeGroup, kHomeGroup), true},
      {"root's own", 0, stays},
      {"nobody's, without the right to change the user", kNobody, stays, false, CAP_SETUID},
      {"nobody's, without the right to change the groups", kNobody, stays, false, CAP_SETGID}};
  if (geteuid() != 0)
    origins = {{"an ordinary user's", geteuid(), "\t" + std::to_string(geteuid())}};
  for (const Origin& origin : origins) {
    SCOPED_TRACE(std::string("the home folder is ") + origin.home);
    fs::remove(prefs);
    MakeEmptyLog(log);
    GiveHome(origin.owner);
    const auto prepare = [&] {
      setgroups(1, &kFormerGroup);
      if (origin.without_right != -1) prctl(PR_CAPBSET_DROP, origin.without_right);
    };
    LookAtARun(prepare, [&](const fs::path& process) {
      Lines lines = ReadLines(process / "status");
      std::erase_if(lines, [](const std::string& line) {
        return !line.starts_with("Uid") && !line.starts_with("Gid") && !line.starts_with("Groups");
      });
      EXPECT_THAT(Text(lines), testing::HasSubstr(origin.identity));
    });
    const std::string writer = std::to_string(origin.changes ? origin.owner : geteuid());
    EXPECT_THAT(Rights(prefs), testing::HasSubstr("owner " + writer + ","));
    const std::string change =
        "-logLevel = 2\nWakerly : Started as root with another user's home folder; now running as "
        "uid  = " +
        writer + "\n";
    const std::string messages = Text(Messages(ReadLog(log)));
    EXPECT_EQ(messages.find(change) != std::string::npos, origin.changes) << messages;
  }
}

// Else the log would get the number of standard error, and what a library prints there.
TEST_F(RootTest, ClosedStandardStreamsAreDevNull) {
  const auto close_all = [] {
    for (const int stream : {0, 1, 2}) close(stream);
  };
  LookAtARun(close_all, [](const fs::path& process) {
    std::error_code error;
    for (const char* stream : {"fd/0", "fd/1", "fd/2"}) {
      EXPECT_EQ(fs::read_symlink(process / stream, error), "/dev/null") << stream;
    }
  });
}

// Where the home folder cannot be used.
class TemporaryFolder : public TreeTest {
 protected:
  TemporaryFolder() {
    WriteFile(home / "Library", "in the place of a folder");
    fs::create_directories(temporary);
  }

  static std::string FoundFolder() {
    std::string folder;
    return esd::GetUpdaterPrefsFolder(folder) ? folder : "none";
  }

  const fs::path temporary = root / "tmp", maker = temporary / "Vantre",
                 updater = maker / "OrlanUpdater", version = updater / "1.0";
};

TEST_F(TemporaryFolder, NewFoldersAreOpenToTheirUserAloneWhateverMaskAndFolderAbove) {
  chmod(temporary.c_str(), 03777);
  for (const mode_t mask : {0U, 0777U}) {
    fs::remove_all(maker);
    umask(mask);
    EXPECT_EQ(FoundFolder(), version);
    for (const fs::path& folder : {maker, updater, version}) {
      EXPECT_TRUE(Rights(folder).starts_with("mode 0700,")) << folder << " has " << Rights(folder);
    }
  }
}

TEST_F(TemporaryFolder, OnlyRealFoldersOfTheUserWhichNobodyElseCanWriteToCount) {
  struct Row {
    std::string what;
    std::function<void()> prepare;
    std::string found = "none";
  };
  std::vector<Row> rows = {
      {"all three are there, readable to others", [] {}, version},
      {"the first is a link to the user's own folder",
       [&] {
         fs::rename(maker, top / "elsewhere");
         fs::create_directory_symlink(top / "elsewhere", maker);
       }},
      {"the first is open to the group", [&] { chmod(maker.c_str(), 0770); }},
      {"the second is open to everybody", [&] { chmod(updater.c_str(), 0707); }}};
  for (const fs::path& folder : {maker, updater, version}) {
    const auto give_away = [folder] { chown(folder.c_str(), kNobody, kNobody); };
    if (geteuid() == 0) rows.push_back({folder.string() + " is another user's", give_away});
  }
  for (const Row& row : rows) {
    fs::remove_all(maker);
    fs::create_directories(version);
    row.prepare();
    EXPECT_EQ(FoundFolder(), row.found) << row.what;
  }
}

}  // namespace
}  // namespace test
