#include "esd/util/replace_file.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstring>
#include <functional>

#include "tests/refusals.h"
#include "tests/test_support.h"

namespace {

namespace fs = test::fs;
using test::ReadFile, test::WriteFile;

struct ReplaceFile : test::TreeTest {
  ReplaceFile() {
    WriteFile(file, "old text");
    chmod(top.c_str(), 0755);
    chmod(folder.c_str(), 0777);
  }
  // Whether the file was replaced; the new text is shorter than the old one.
  static bool Replace(const fs::path& path) { return esd::ReplaceFile(path, "new", 0).has_value(); }

  std::uint64_t Inode() const { return platform::StampOf(file.string())->inode; }
  const fs::path folder = top / "folder", file = folder / "file";
};

TEST_F(ReplaceFile, PutsANewFileOfTheSameRightsInThePlaceOfTheOldOne) {
  ASSERT_TRUE(geteuid() != 0 || chown(file.c_str(), test::kOrdinaryUser, 65533) == 0);
  ASSERT_EQ(chmod(file.c_str(), 0640), 0);
  const std::string rights = test::Rights(file);
  const std::uint64_t inode = Inode();
  const std::size_t open_files = test::Names("/proc/self/fd").size();
  EXPECT_TRUE(Replace(file));
  EXPECT_EQ(test::Names("/proc/self/fd").size(), open_files);
  EXPECT_EQ(ReadFile(file), "new");
  EXPECT_NE(Inode(), inode);
  EXPECT_EQ(test::Rights(file), rights);
  EXPECT_EQ(test::Names(folder), test::Lines{"file"});
}

TEST_F(ReplaceFile, MakesAMissingFileWithTheRightsThatTheMaskLeaves) {
  umask(027);
  // Beside the second name there is no room for the name of a new file.
  for (const fs::path& path : {folder / "missing", folder / std::string(250, 'n')}) {
    EXPECT_TRUE(Replace(path)) << path;
    EXPECT_EQ(test::Rights(path), test::RightsText(0640, geteuid(), getegid())) << path;
  }
}

TEST_F(ReplaceFile, KeepsAccessControlListAndAttributes) {
  // An access control list that lets user 65532 read and write (acl(5), linux/posix_acl_xattr.h).
  const std::string list(
      "\2\0\0\0\1\0\6\0\xFF\xFF\xFF\xFF\2\0\6\0\xFC\xFF\0\0\4\0\4\0\xFF\xFF\xFF\xFF"
      "\x10\0\6\0\xFF\xFF\xFF\xFF\x20\0\0\0\xFF\xFF\xFF\xFF",
      44);
  for (const auto& [name, value] :
       {std::pair("user.comment", std::string("some text")), {"system.posix_acl_access", list}}) {
    const int given = setxattr(file.c_str(), name, value.data(), value.size(), 0);
    ASSERT_TRUE(given == 0 || errno == ENOTSUP) << name;
    EXPECT_TRUE(Replace(file));
    std::string found(value.size(), '\0');
    getxattr(file.c_str(), name, found.data(), found.size());
    EXPECT_TRUE(given != 0 || found == value) << name << " has changed";
  }
  // A new file would have the list of its folder.
  removexattr(file.c_str(), "system.posix_acl_access");
  setxattr(folder.c_str(), "system.posix_acl_default", list.data(), list.size(), 0);
  EXPECT_TRUE(Replace(file));
  EXPECT_EQ(getxattr(file.c_str(), "system.posix_acl_access", nullptr, 0), -1) << "it has a list";
}

TEST_F(ReplaceFile, GivesATimeThatNobodyHasSeen) {
  constexpr std::uint64_t kHour = 3'600'000'000'000;
  std::uint64_t last = platform::StampOf(file.string())->time;
  const auto replace = [&](const char* way, std::uint64_t later_than) {
    SCOPED_TRACE(way);
    const auto stamp = esd::ReplaceFile(file, "2", later_than);
    ASSERT_TRUE(stamp);
    EXPECT_GT(stamp->time, std::max(last, later_than));
    EXPECT_EQ(stamp->time, platform::StampOf(file.string())->time);
    EXPECT_EQ(stamp->inode, Inode());
    last = stamp->time;
  };
  replace("later than the given time", last + kHour);
  replace("later than its own time, which is ahead of the clock", 0);
  fs::create_hard_link(file, top / "other name");
  replace("later than its own time, written over", 0);
}

TEST_F(ReplaceFile, FollowsLinksWhichStay) {
  fs::create_symlink("folder/file", top / "relative");
  fs::create_symlink(top / "relative", folder / "chain");
  EXPECT_TRUE(Replace(folder / "chain"));
  EXPECT_TRUE(fs::is_symlink(folder / "chain"));
  EXPECT_EQ(ReadFile(file), "new");
  fs::create_symlink("loop", folder / "loop");
  EXPECT_FALSE(Replace(folder / "loop"));
}

// It stays the same file then.
TEST_F(ReplaceFile, WritesOverAFileWhosePlaceCannotBeTaken) {
  const struct {
    const char* why;
    bool as_ordinary_user;
    std::function<bool()> prepare;  // false for what this user cannot stage
  } rows[] = {
      {"another hard link", false, [&] { return link(file.c_str(), (top / "x").c_str()) == 0; }},
      {"a mount point", false,
       [&] {
         return unshare(CLONE_NEWNS) == 0 &&
                mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                mount(file.c_str(), file.c_str(), nullptr, MS_BIND, nullptr) == 0;
       }},
      {"EPERM from rename", false, [] { return test::Refuse(EPERM, SYS_rename), true; }},
      {"EACCES from rename", false, [] { return test::Refuse(EACCES, SYS_rename), true; }},
      {"no right to change the folder", true, [&] { return chmod(folder.c_str(), 0555) == 0; }},
      {"no right to give a file away", true, [] { return geteuid() == 0; }}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.why);
    chmod(folder.c_str(), 0777);
    fs::remove(file);
    WriteFile(file, "old text");
    chmod(file.c_str(), 0666);
    test::ExpectInChild([&, before = Inode()] {
      if (!row.prepare()) return;
      if (row.as_ordinary_user) test::BecomeOrdinaryUser();
      EXPECT_TRUE(Replace(file));
      EXPECT_EQ(ReadFile(file), "new");
      EXPECT_EQ(Inode(), before);
      EXPECT_EQ(test::Names(folder), test::Lines{"file"});
    });
  }
}

// Written over, it would not be whole either.
TEST_F(ReplaceFile, LeavesAFileAloneWhoseRightsFindNoRoom) {
  if (geteuid() != 0) return;  // nobody else has a file that is to be given away
  ASSERT_EQ(chown(file.c_str(), test::kOrdinaryUser, 65533), 0);
  for (const int error : {ENOSPC, EDQUOT}) {
    test::ExpectInChild([&] {
      test::Refuse(error, SYS_fchown);
      EXPECT_FALSE(Replace(file)) << std::strerror(error);
      EXPECT_EQ(ReadFile(file), "old text");
    });
  }
}

TEST_F(ReplaceFile, LeavesAFileAloneThatMayNotBeWritten) {
  chmod(file.c_str(), 0444);
  ASSERT_TRUE(geteuid() != 0 || chown(file.c_str(), test::kOrdinaryUser, gid_t(-1)) == 0);
  test::ExpectInChild([&] {
    test::BecomeOrdinaryUser();
    EXPECT_FALSE(Replace(file));
  });
  EXPECT_EQ(ReadFile(file), "old text");
}

TEST_F(ReplaceFile, LeavesFileAndTimeAsTheyWereOnABadDisk) {
  const fs::path written_over = folder / "written over";
  WriteFile(written_over, "old text");
  fs::create_hard_link(written_over, top / "other name");
  const auto time = fs::last_write_time(file);
  fs::last_write_time(written_over, time);
  for (const bool is_full : {true, false}) {
    test::ExpectInChild([&] {
      is_full ? test::LimitFileSize(10) : test::Refuse(EIO, SYS_fsync);
      for (const fs::path& path : {file, written_over, folder / std::string(250, 'n')}) {
        EXPECT_FALSE(esd::ReplaceFile(path, "a text of more than ten bytes", 0))
            << path << " on a disk that " << (is_full ? "is full" : "fails at the flush");
      }
    });
  }
  for (const fs::path& old : {file, written_over}) {
    EXPECT_EQ(ReadFile(old), "old text") << old;
    EXPECT_TRUE(fs::last_write_time(old) == time) << old << " has another time";
  }
  EXPECT_EQ(test::Text(test::Names(folder)), "file\nwritten over\n");
}

}  // namespace
