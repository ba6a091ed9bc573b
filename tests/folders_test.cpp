#include <sys/stat.h>

#include "esd/prefs/updater_folders.h"
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

// The ids of the console user have tests of their own, in which nobody real sits at the console.
TEST_F(FoldersTest, IdsTellALostFolderOnlyWhereTheyAreTheFolderItself) {
  const std::pair<unsigned, std::pair<std::string, const char*>> cases[] = {
      {3, {root / "Library/Application Support", "!before"}},
      {13, {root / "Users/Shared", "before"}},
      {30, {root / "Applications/Utilities/Vantre Lumora/", "before/Vantre Lumora/"}},
      {33, {"!before", "!before"}}};
  for (const auto& [id, paths] : cases) EXPECT_EQ(ById(id), paths.first) << id;
  for (const char* name : {"Applications", "Library", "Users"}) Block(root / name);
  for (const auto& [id, paths] : cases) EXPECT_EQ(ById(id), paths.second) << id;
}

TEST_F(FoldersTest, SystemFolderPathsEndAt1023Bytes) {
  std::string deep = root.string() + "/";
  while (deep.size() + sizeof "/Library/Preferences" < 1024) deep += deep.size() % 100 ? "x" : "/";
  setenv("WAKERLY_ROOT", deep.c_str(), 1);
  EXPECT_EQ(ById(31), deep + "/Library/Preferences");
  setenv("WAKERLY_ROOT", (deep + "x").c_str(), 1);
  EXPECT_EQ(ById(31), "!before");
}

TEST_F(FoldersTest, NewUpdaterFoldersTakeTheModeAboveOrAreShared) {
  // The base and the maker's folder before; whether shared; maker's and own folder afterwards.
  constexpr unsigned kCases[][5] = {
      {0711, 0, 0, 0711, 0711}, {0711, 0750, 1, 0750, 0775}, {0, 0, 0, 0774, 0774}};
  umask(0);
  const fs::path base = top / "base", maker = base / "Vantre";
  for (const auto& [base_mode, maker_mode, shared, new_maker, new_version] : kCases) {
    fs::remove_all(base);
    if (base_mode != 0) mkdir(base.c_str(), base_mode);
    if (maker_mode != 0) mkdir(maker.c_str(), maker_mode);
    std::string path = base;
    EXPECT_TRUE(esd::EnsureUpdaterFolder(path, shared != 0));
    EXPECT_EQ(fs::status(maker).permissions(), fs::perms(new_maker));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(new_version));
  }
}

TEST_F(FoldersTest, PreferencesFallBackToTheTemporaryFolder) {
  Block(home / "Library");
  EXPECT_EQ(Found(esd::GetUserCacheFolder), root / "tmp/Vantre");
  EXPECT_EQ(Found(esd::GetUpdaterPrefsFolder), root / "tmp/Vantre/OrlanUpdater/1.0");
  Block(root / "tmp");
  EXPECT_EQ(Found(esd::GetUpdaterPrefsFolder), "!before");
}

TEST_F(FoldersTest, MachineWideFilesAreNotMade) {
  EXPECT_EQ(Found(esd::GetUninstallStampPath), "!before");
  EXPECT_EQ(Found(esd::GetNotifierExecutablePath), "!");
  EXPECT_TRUE(fs::is_empty(root));
}

}  // namespace
