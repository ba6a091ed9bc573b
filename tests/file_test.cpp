#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include "esd/util/delete_path.h"
#include "esd/util/folder_tree.h"
#include "tests/test_support.h"

namespace {

namespace fs = test::fs;
// An ordinary user with its group, another group of that user, and one it is no member of.
constexpr unsigned kOther = 65534, kSupplement = 65533, kForeign = 65532;

/// Mode, owner and group.
std::vector<unsigned> Rights(const fs::path& path) {
  struct stat status {};
  stat(path.c_str(), &status);
  return {status.st_mode & 07777, status.st_uid, status.st_gid};
}

// False where the user or the file system does not allow it.
bool ChangeLock(const char* change, const fs::path& path) {
  return system(("chattr " + (change + (" '" + path.string()) + "' 2>/dev/null")).c_str()) == 0;
}

class FileTest : public test::TreeTest {
 protected:
  FileTest() {
    test::WriteFile(file, "");
    EXPECT_EQ(chmod(top.c_str(), 0755) + chmod(work.c_str(), 0777), 0);
  }
  ~FileTest() override { ChangeLock("-R -i", work); }

  /// 1 when `body` returns true as an ordinary user, who may write in `work`, else 0.
  static int AsOther(const std::function<bool()>& body) {
    return test::InChild([&] {
      if (geteuid() == 0 && setgroups(1, &kSupplement) + setgid(kOther) + setuid(kOther)) return 99;
      return body() ? 1 : 0;
    });
  }
  const fs::path work = top / "work", file = work / "file";
};

TEST_F(FileTest, NewFoldersTakeModeOwnerAndGroupOfTheirParent) {
  chmod(work.c_str(), 01757);
  [[maybe_unused]] const int may_fail = chown(work.c_str(), kOther, kForeign);
  EXPECT_TRUE(esd::CreateFolderTree(work / "a/b"));
  for (const char* name : {"a", "a/b"}) EXPECT_EQ(Rights(work / name), Rights(work)) << name;
  const auto make_own = [&] {
    umask(0777);
    return esd::CreateFolderTree(work / "own/b");
  };
  EXPECT_EQ(AsOther(make_own), 1);
  EXPECT_EQ(Rights(work / "own/b")[0], 01757U);  // the group stays its own
  EXPECT_TRUE(esd::CreateFolderTree(file));      // the name is taken
  for (auto path : {file / "x/y", fs::path()}) EXPECT_FALSE(esd::CreateFolderTree(path)) << path;
}

TEST_F(FileTest, DeletesATreeWithAllItHoldsButNotWhatLinksPointToNorASingleLockedFile) {
  for (const char* path : {"tree/a/file", "tree/locked"}) test::WriteFile(work / path, "");
  for (const char* link : {"tree/link", "link", "two"}) fs::create_symlink(home, work / link);
  test::WriteFile(home / "kept", "");
  ChangeLock("+i", work / "tree/locked");
  const bool locked = ChangeLock("+i", file);
  for (auto name : {"tree", "link", "two/", "x"}) EXPECT_TRUE(esd::DeletePath(work / name));
  EXPECT_EQ(esd::DeletePath(file), !locked);
  EXPECT_EQ(test::Names(work).size(), locked ? 1U : 0U);
  EXPECT_TRUE(fs::exists(home / "kept"));
}

TEST_F(FileTest, DeletingFailsWhereAnOrdinaryUserMayNotWrite) {
  const fs::path closed = work / "closed";
  test::WriteFile(closed / "file", "");
  chmod(closed.c_str(), 0500);
  EXPECT_EQ(AsOther([&] { return esd::DeletePath(closed); }), 0);
  chmod(closed.c_str(), 0700);
  constexpr unsigned kCases[][4] = {{kOther, kOther, 0466, 0},
                                    {0, kOther, 0060, 1},
                                    {0, kSupplement, 0406, 0},
                                    {0, kForeign, 0400, 1}};
  for (const auto& [owner, group, mode, deleted] : kCases) {
    test::WriteFile(file, "");
    chmod(file.c_str(), mode);
    // An ordinary user has no files but its own.
    if (chown(file.c_str(), owner, group) != 0 && owner != kOther) continue;
    EXPECT_EQ(AsOther([&] { return esd::DeletePath(file); }), deleted) << std::oct << mode;
    fs::remove(file);
  }
}

}  // namespace
