#include <sys/stat.h>
#include <unistd.h>

#include "esd/prefs/updater_folders.h"
#include "esd/util/folder_tree.h"
#include "tests/test_support.h"
#include "welko/folder_path.h"

namespace {

namespace fs = test::fs;
using FoldersTest = test::TreeTest;

/// The path that `find` gives; where it answers false, "!" and what became of "before".
std::string Found(const std::function<bool(std::string&)>& find) {
  std::string path = "before";
  return find(path) ? path : "!" + path;
}
std::string ById(unsigned id) {
  return Found([id](std::string& path) { return welko::GetFolderPath(id, path); });
}

/// A file in the place of a folder: nothing below it can be found or made.
void Block(const fs::path& path) {
  fs::remove_all(path);
  test::WriteFile(path, "");
}

/// Mode, owner and group.
std::vector<unsigned> Rights(const fs::path& path) {
  struct stat status {};
  stat(path.c_str(), &status);
  return {status.st_mode & 07777, status.st_uid, status.st_gid};
}

// The ids of the console user have tests of their own, in which nobody real sits at the console.
TEST_F(FoldersTest, IdsTellALostFolderOnlyWhereTheyAreTheFolderItself) {
  EXPECT_EQ(esd::GetUninstallStampPath(), std::nullopt);  // machine-wide ones are not made
  EXPECT_EQ(Found(esd::GetNotifierExecutablePath), "!");
  EXPECT_TRUE(fs::is_empty(root));
  const std::tuple<unsigned, std::string, const char*> cases[] = {
      {3, root / "Library/Application Support", "!before"},
      {13, root / "Users/Shared", "before"},
      {30, root / "Applications/Utilities/Vantre Lumora/", "before/Vantre Lumora/"},
      {33, "!before", "!before"}};
  for (const auto& [id, path, lost] : cases) EXPECT_EQ(ById(id), path);
  for (const char* name : {"Applications", "Library", "Users"}) Block(root / name);
  for (const auto& [id, path, lost] : cases) EXPECT_EQ(ById(id), lost) << id;
}

TEST_F(FoldersTest, SystemFolderPathsEndAt1023Bytes) {
  std::string deep = root.string() + "/";
  while (deep.size() + sizeof "/Library/Preferences" < 1024) deep += deep.size() % 100 ? "x" : "/";
  setenv("WAKERLY_ROOT", deep.c_str(), 1);
  EXPECT_EQ(ById(31), deep + "/Library/Preferences");
  setenv("WAKERLY_ROOT", (deep + "x").c_str(), 1);
  EXPECT_EQ(ById(31), "!before");
}

TEST_F(FoldersTest, NewUpdaterFoldersTakeTheRightsAboveOrAreShared) {
  // The mode of the base, which may be missing; whether shared; the mode of the new folders.
  constexpr unsigned kCases[][3] = {{01757, 0, 01757}, {0711, 1, 0775}, {0, 0, 0774}};
  umask(0777);
  for (const auto& [base_mode, shared, new_mode] : kCases) {
    const fs::path base = top / std::to_string(base_mode);
    if (base_mode != 0) mkdir(base.c_str(), 0);
    [[maybe_unused]] const int may_fail = chown(base.c_str(), 65534, 65532);
    chmod(base.c_str(), base_mode);
    std::string path = base;
    EXPECT_TRUE(esd::EnsureUpdaterFolder(path, shared != 0));
    std::vector<unsigned> rights = Rights(base);
    rights[0] = new_mode;
    for (const char* name : {"Vantre", "Vantre/OrlanUpdater", "Vantre/OrlanUpdater/1.0"}) {
      EXPECT_EQ(Rights(base / name), rights) << name;
    }
  }
  test::WriteFile(top / "file", "");
  EXPECT_TRUE(esd::CreateFolderTree(top / "file"));  // the name is taken
}

TEST_F(FoldersTest, PreferencesFallBackToTheTemporaryFolder) {
  Block(home / "Library");
  EXPECT_EQ(esd::GetUserCacheFolder(), root / "tmp/Vantre");
  EXPECT_EQ(Found(esd::GetUpdaterPrefsFolder), root / "tmp/Vantre/OrlanUpdater/1.0");
  Block(root / "tmp");
  EXPECT_EQ(Found(esd::GetUpdaterPrefsFolder), "!before");
}

}  // namespace
