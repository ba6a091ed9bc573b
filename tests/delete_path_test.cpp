#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include "esd/util/delete_path.h"
#include "tests/test_support.h"

namespace {

namespace fs = test::fs;
// An ordinary user with its group, another group of that user, and one it is no member of.
constexpr unsigned kOther = 65534, kSupplement = 65533, kForeign = 65532;

// False where the user or the file system does not allow it.
bool ChangeLock(const char* change, const fs::path& path) {
  return system(("chattr " + (change + (" '" + path.string()) + "' 2>/dev/null")).c_str()) == 0;
}

struct DeletePath : test::TreeTest {
  DeletePath() {
    test::WriteFile(file, "");
    EXPECT_EQ(chmod(top.c_str(), 0755) + chmod(work.c_str(), 0777), 0);
  }
  ~DeletePath() override { ChangeLock("-R -i", work); }

  const fs::path work = top / "work", file = work / "file";
};

TEST_F(DeletePath, TakesATreeWithAllItHoldsButNotWhatLinksPointToNorASingleLockedFile) {
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

TEST_F(DeletePath, FailsWhereAnOrdinaryUserMayNotWrite) {
  const auto delete_as_other = [this]() -> int {
    if (geteuid() == 0 && setgroups(1, &kSupplement) + setgid(kOther) + setuid(kOther)) return 99;
    return esd::DeletePath(file);
  };
  constexpr unsigned kCases[][4] = {{kOther, kOther, 0466, 0},
                                    {0, kOther, 0060, 1},
                                    {0, kSupplement, 0406, 0},
                                    {0, kForeign, 0400, 1}};
  for (const auto& [owner, group, mode, deleted] : kCases) {
    test::WriteFile(file, "");
    chmod(file.c_str(), mode);
    // An ordinary user has no files but its own.
    if (chown(file.c_str(), owner, group) != 0 && owner != kOther) continue;
    EXPECT_EQ(test::InChild(delete_as_other), deleted) << std::oct << mode;
    fs::remove(file);
  }
}

}  // namespace
