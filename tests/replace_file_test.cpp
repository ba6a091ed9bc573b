#include "esd/util/replace_file.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>

#include "tests/test_support.h"

namespace {

namespace fs = test::fs;
using test::ReadFile, test::Rights, test::WriteFile;

class ReplaceFile : public test::TreeTest {
 protected:
  ReplaceFile() {
    WriteFile(file, "old text");
    chmod(top.c_str(), 0755);
    chmod(folder.c_str(), 0777);
  }

  // Whether the file was replaced; the new text is shorter than the old one.
  bool Replace(const fs::path& path) const { return esd::ReplaceFile(path, "new", 0).has_value(); }

  // The same by an ordinary user, which this process becomes if it is root.
  bool ReplaceAsOrdinaryUser(const fs::path& path) const {
    return test::InChild([&] {
             test::BecomeOrdinaryUser();
             return Replace(path) ? 1 : 0;
           }) == 1;
  }

  static ino_t Inode(const fs::path& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? status.st_ino : 0;
  }

  const fs::path folder = top / "folder", file = folder / "file";
};

TEST_F(ReplaceFile, PutsANewFileInThePlaceOfTheOldOneAndLeavesNothingElse) {
  const ino_t before = Inode(file);
  EXPECT_TRUE(Replace(file));
  EXPECT_EQ(ReadFile(file), "new");
  EXPECT_NE(Inode(file), before);
  EXPECT_EQ(test::Names(folder), test::Lines{"file"});
}

TEST_F(ReplaceFile, MakesAMissingFileWithTheRightsThatTheMaskLeaves) {
  umask(027);
  EXPECT_TRUE(Replace(folder / "missing"));
  EXPECT_EQ(ReadFile(folder / "missing"), "new");
  const std::string own = ", owner " + std::to_string(geteuid()) + ", group ";
  EXPECT_EQ(Rights(folder / "missing"), "mode 0640" + own + std::to_string(getegid()));
}

TEST_F(ReplaceFile, KeepsModeAndOwner) {
  if (geteuid() == 0) {
    ASSERT_EQ(chown(file.c_str(), test::kOrdinaryUser, 65533), 0);
  }
  ASSERT_EQ(chmod(file.c_str(), 0640), 0);
  const std::string rights = Rights(file);
  EXPECT_TRUE(Replace(file));
  EXPECT_EQ(Rights(file), rights);
}

TEST_F(ReplaceFile, KeepsAccessControlListAndAttributes) {
  // An access control list that lets user 65532 read and write (acl(5), linux/posix_acl_xattr.h).
  const std::string list(
      "\2\0\0\0"
      "\1\0\6\0\xFF\xFF\xFF\xFF"
      "\2\0\6\0\xFC\xFF\0\0"
      "\4\0\4\0\xFF\xFF\xFF\xFF"
      "\x10\0\6\0\xFF\xFF\xFF\xFF"
      "\x20\0\0\0\xFF\xFF\xFF\xFF",
      44);
  const std::pair<const char*, std::string> attributes[] = {{"user.comment", "text\0more"},
                                                            {"system.posix_acl_access", list}};
  bool given[2] = {};
  for (int i = 0; i < 2; ++i) {
    const auto& [name, value] = attributes[i];
    given[i] = setxattr(file.c_str(), name, value.data(), value.size(), 0) == 0;
    ASSERT_TRUE(given[i] || errno == ENOTSUP) << name;
  }
  EXPECT_TRUE(Replace(file));
  for (int i = 0; i < 2; ++i) {
    const auto& [name, value] = attributes[i];
    std::string found(100, '\0');
    const ssize_t size = getxattr(file.c_str(), name, found.data(), found.size());
    EXPECT_EQ(size >= 0, given[i]) << name;
    if (!given[i]) continue;
    EXPECT_TRUE(found.substr(0, value.size()) == value) << name << " has changed";
  }
}

TEST_F(ReplaceFile, GivesATimeThatNobodyHasSeen) {
  constexpr std::uint64_t kHour = 3'600'000'000'000;
  std::uint64_t last = esd::ReplaceFile(file, "1", 0)->time + kHour;
  // Beyond the given time, then beyond the file's own, which is ahead of the clock by now.
  for (const std::uint64_t given : {last, std::uint64_t{0}, std::uint64_t{0}}) {
    const auto stamp = esd::ReplaceFile(file, "2", given);
    ASSERT_TRUE(stamp);
    EXPECT_GT(stamp->time, last);
    EXPECT_EQ(stamp->time, platform::StampOf(file.string())->time);
    EXPECT_EQ(stamp->inode, Inode(file));
    last = stamp->time;
  }
}

TEST_F(ReplaceFile, FollowsLinksWhichStay) {
  fs::create_symlink("folder/file", top / "relative");
  fs::create_symlink(top / "relative", folder / "chain");
  fs::create_symlink("none", folder / "dangling");
  const std::pair<const char*, const char*> cases[] = {{"chain", "file"}, {"dangling", "none"}};
  for (const auto& [link, target] : cases) {
    EXPECT_TRUE(Replace(folder / link)) << link;
    EXPECT_TRUE(fs::is_symlink(folder / link)) << link;
    EXPECT_EQ(ReadFile(folder / target), "new") << link;
  }
  fs::create_symlink("loop", folder / "loop");
  EXPECT_FALSE(Replace(folder / "loop"));
}

TEST_F(ReplaceFile, RefusesWhatIsNoFileWithoutOpeningIt) {
  fs::create_directory(folder / "folder");
  mkfifo((folder / "fifo").c_str(), 0666);
  fs::create_symlink("/dev/null", folder / "device");
  for (const char* name : {"folder", "fifo", "device"})
    EXPECT_FALSE(Replace(folder / name)) << name;
  EXPECT_FALSE(Replace(top / "no folder/file"));
}

TEST_F(ReplaceFile, WritesOverAFileWithAnotherNameWhichStaysTheSameFile) {
  fs::create_hard_link(file, top / "other name");
  EXPECT_TRUE(Replace(file));
  EXPECT_EQ(ReadFile(file), "new");
  EXPECT_EQ(ReadFile(top / "other name"), "new");
}

TEST_F(ReplaceFile, WritesOverAFileThatOthersOwnOrWhoseFolderMayNotBeChanged) {
  if (geteuid() != 0) return;  // an ordinary user cannot stage it
  const std::pair<const char*, mode_t> cases[] = {
      {"no right to make a file in the folder", 0755},
      {"no right to rename over it, in a folder with the sticky bit, nor to give a file away",
       01777}};
  for (const auto& [why, folder_mode] : cases) {
    SCOPED_TRACE(why);
    WriteFile(file, "old text");
    chmod(file.c_str(), 0666);
    chmod(folder.c_str(), folder_mode);
    const ino_t before = Inode(file);
    EXPECT_TRUE(ReplaceAsOrdinaryUser(file));
    EXPECT_EQ(ReadFile(file), "new");
    EXPECT_EQ(Inode(file), before);
    EXPECT_EQ(test::Names(folder), test::Lines{"file"});
  }
}

// Nothing can be renamed over it.
TEST_F(ReplaceFile, WritesOverAFileThatIsAMountPoint) {
  test::ExpectInChild([&] {
    const bool is_mounted = unshare(CLONE_NEWNS) == 0 &&
                            mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                            mount(file.c_str(), file.c_str(), nullptr, MS_BIND, nullptr) == 0;
    EXPECT_TRUE(is_mounted || errno == EPERM || errno == EACCES) << "mounting fails otherwise";
    EXPECT_TRUE(Replace(file));
    EXPECT_EQ(ReadFile(file), "new");
    EXPECT_EQ(test::Names(folder), test::Lines{"file"});
  });
}

TEST_F(ReplaceFile, LeavesAFileAloneThatMayNotBeWritten) {
  chmod(file.c_str(), 0444);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(file.c_str(), test::kOrdinaryUser, gid_t(-1)), 0);
  }
  EXPECT_FALSE(ReplaceAsOrdinaryUser(file));
  EXPECT_EQ(ReadFile(file), "old text");
}

// Both ways: with another hard link the file is written over, and its bytes are put back.
TEST_F(ReplaceFile, LeavesFileAndTimeAsTheyWereOnAFullDisk) {
  for (const bool has_other_link : {false, true}) {
    SCOPED_TRACE(has_other_link ? "written over" : "replaced");
    if (has_other_link) fs::create_hard_link(file, top / "other name");
    const auto before = fs::last_write_time(file);
    test::ExpectInChild([&] {
      signal(SIGXFSZ, SIG_IGN);
      const rlimit full = {10, 10};
      setrlimit(RLIMIT_FSIZE, &full);
      EXPECT_FALSE(esd::ReplaceFile(file, "a text of more than ten bytes", 0));
      // A name of this length leaves no room for that of a new file beside it.
      for (const std::string& name : {std::string("new"), std::string(250, 'n')}) {
        EXPECT_FALSE(esd::ReplaceFile(folder / name, "a text of more than ten bytes", 0)) << name;
      }
    });
    EXPECT_EQ(ReadFile(file), "old text");
    EXPECT_TRUE(fs::last_write_time(file) == before) << "the file's time has changed";
    EXPECT_EQ(test::Names(folder), test::Lines{"file"});
  }
}

TEST_F(ReplaceFile, RemovesWhatAKilledReplacementLeftAndNothingElse) {
  const char* const kept[] = {".file.new-0123456789a", ".file.new-0123456789xy",
                              ".other.new-0123456789ab", "file.new-0123456789ab"};
  for (const char* name : kept) WriteFile(folder / name, "");
  WriteFile(folder / ".file.new-0123456789ab", "half a te");
  esd::RemoveLeftovers(file);
  EXPECT_FALSE(fs::exists(folder / ".file.new-0123456789ab"));
  for (const char* name : kept) EXPECT_TRUE(fs::exists(folder / name)) << name;
}

}  // namespace
