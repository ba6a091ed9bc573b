// Each folder that the program knows by a number, the updater's own folders, and the launch
// agents'. Nobody sits at the screen here.

#include <unistd.h>

#include <set>

#include "esd/prefs/launch_agent.h"
#include "esd/prefs/updater_folders.h"
#include "esd/util/special_folder.h"
#include "tests/test_support.h"
#include "welko/folder_path.h"

namespace test {
namespace {

// The path that `find` gives, or what it leaves in the text "before" when it answers false.
std::string Found(const std::function<bool(std::string&)>& find) {
  std::string path = "before";
  return find(path) ? path : "not found, and the path still '" + path + "'";
}
const std::string kNotFound = Found([](std::string&) { return false; });

std::string ById(unsigned id) {
  return Found([id](std::string& path) { return welko::GetFolderPath(id, path); });
}
std::string ByKind(unsigned kind, bool create) {
  return Found([=](std::string& path) { return esd::GetSpecialFolder(kind, path, create); });
}

// A file in the place of a folder: nothing below it can be found or made.
void Block(const fs::path& path) {
  fs::remove_all(path);
  WriteFile(path, "");
}

struct FolderId {
  unsigned id;
  const char* system;        // made when it is missing
  const char* product = "";  // added to it, and not made
};

constexpr FolderId kFolderIds[] = {
    {0, "root/Applications"},
    {2, "root/Library/Application Support"},
    {3, "root/Library/Application Support"},
    {10, "home/Documents"},
    {12, "home/Library/Application Support"},
    {13, "root/Users/Shared"},
    {18, "root/Library/Application Support", "/Vantre"},
    {19, "home/Library/Application Support", "/Vantre"},
    {20, "root/Users/Shared", "/Vantre"},
    {21, "root/Library/Application Support", "/Vantre/Welko"},
    {22, "home/Library/Application Support", "/Vantre/Welko"},
    {23, "root/Users/Shared", "/Vantre/Welko"},
    {24, "root/Applications/Utilities", "/Vantre Application Manager/"},
    {25, "root/Library/Application Support", "/Vantre/Welko/Tarnik"},
    {26, "home/Library/Application Support", "/Vantre/Welko/Tarnik"},
    {27, "root/Library/Application Support", "/Vantre/VantreApplicationManager/OrlanRefs"},
    {28, "root/Library/Application Support", "/Vantre/PeltRefs"},
    {29, "root/Library/Application Support", "/Vantre/Vantre Desktop Common"},
    {30, "root/Applications/Utilities", "/Vantre Lumora/"},
    {31, "root/Library/Preferences"},
    {32, "home/Library/Logs"},
};

using FolderIdTest = TreeTest;

TEST_F(FolderIdTest, GivesTheSystemsFolderMadeAndTheProductsNot) {
  for (const auto& [id, system, product] : kFolderIds) {
    SCOPED_TRACE("folder id " + std::to_string(id));
    for (const fs::path& place : {home, root}) fs::remove_all(place);
    fs::create_directory(home);
    EXPECT_EQ(ById(id), (top / system).string() + product);
    EXPECT_TRUE(fs::is_directory(top / system)) << system << " is not made";
    EXPECT_TRUE(fs::is_empty(top / system)) << "something is made in " << system;
  }
}

// The other results are always good, with what is added and nothing before it.
TEST_F(FolderIdTest, TellsForSomeThatTheFolderIsLost) {
  const std::set<unsigned> telling = {0, 2, 3, 31, 32};
  for (const fs::path& place : {home, root}) Block(place);
  for (const auto& [id, system, product] : kFolderIds) {
    EXPECT_EQ(ById(id), telling.contains(id) ? kNotFound : std::string("before") + product)
        << "folder id " << id;
  }
}

TEST_F(FolderIdTest, KnowsFoldersThatNobodyLooksForAndNoOtherNumbers) {
  for (const fs::path& place : {home, root}) fs::remove_all(place);
  EXPECT_EQ(ById(9), home);
  EXPECT_EQ(ById(15), "/tmp");
  unsetenv("TMPDIR");
  EXPECT_EQ(ByKind(0, false), "/tmp");
  EXPECT_EQ(ByKind(14, false), "/");
  EXPECT_EQ(ByKind(15, true), kNotFound);
  for (const unsigned id : {1U, 4U, 8U, 11U, 14U, 33U}) EXPECT_EQ(ById(id), kNotFound) << id;
}

TEST_F(FolderIdTest, EndsSystemPathsAt1023Bytes) {
  const std::string preferences = "/Library/Preferences";
  std::string deep = root;
  while (deep.size() + preferences.size() < 1023) deep += deep.size() % 100 == 0 ? '/' : 'x';
  setenv("WAKERLY_ROOT", deep.c_str(), 1);
  EXPECT_EQ(ById(31), deep + preferences);
  setenv("WAKERLY_ROOT", (deep + "x").c_str(), 1);
  EXPECT_EQ(ById(31), kNotFound);
}

// Runs a second time from inside a bundle.
TEST_F(FolderIdTest, KnowsTheOwnBundle) {
  const fs::path program = fs::canonical("/proc/self/exe"), folder = program.parent_path();
  const bool inside = folder.filename() == "MacOS";
  const fs::path own = inside ? folder.parent_path().parent_path() : program;
  EXPECT_EQ(ById(16), own);
  EXPECT_EQ(ById(17), own.parent_path());
  if (inside) return;
  const fs::path copy = top / "Some.app/Contents/MacOS/Some";
  fs::create_directories(copy.parent_path());
  fs::copy_file(program, copy);
  const char* const filter = "--gtest_filter=FolderIdTest.KnowsTheOwnBundle";
  const auto run = [&] { return execl(copy.c_str(), copy.c_str(), filter, nullptr); };
  EXPECT_EQ(InChild(run), 0) << "inside a bundle";
}

using SpecialFolderTest = TreeTest;

TEST_F(SpecialFolderTest, IsMadeOnlyWhenAsked) {
  const std::pair<const char*, std::vector<unsigned>> rows[] = {
      {"temporary", {0, 1}},
      {"root/tmp", {2}},
      {"home/Desktop", {3}},
      {"home/Documents", {4}},
      {"home/Library/Caches", {5}},
      {"home/Library/Preferences", {6}},
      {"home/Library/Application Support", {7}},
      {"root/Library/Application Support", {8, 9, 13}},
      {"root/Library/Fonts", {10}},
      {"root/System", {11, 12}}};
  setenv("TMPDIR", (top / "temporary").c_str(), 1);
  for (const auto& [folder, kinds] : rows) {
    for (const unsigned kind : kinds) {
      SCOPED_TRACE("kind " + std::to_string(kind));
      for (const char* place : {"home", "root", "temporary"}) fs::remove_all(top / place);
      EXPECT_EQ(ByKind(kind, false), kNotFound);
      EXPECT_FALSE(fs::exists(top / folder)) << folder << " is made";
      EXPECT_EQ(ByKind(kind, true), top / folder);
      EXPECT_TRUE(fs::is_directory(top / folder)) << folder << " is not made";
      EXPECT_EQ(ByKind(kind, false), top / folder);
    }
  }
}

using UpdaterFoldersTest = TreeTest;

TEST_F(UpdaterFoldersTest, TheUsersCacheFallsBackToTheTemporaryFolder) {
  Block(home / "Library");
  EXPECT_EQ(esd::GetUserCacheFolder(), root / "tmp/Vantre");
  Block(root / "tmp");
  EXPECT_EQ(esd::GetUserCacheFolder(), std::nullopt);
}

// New folders have the mode of the one above, or are shared, and belong to whom that belongs.
TEST_F(UpdaterFoldersTest, KeepTheirRightsOrTakeThoseAbove) {
  const fs::path base = top / "base", maker = base / "Vantre", updater = maker / "OrlanUpdater";
  const fs::path folders[] = {base, maker, updater, updater / "1.0"};
  const struct {
    const char* name;
    bool shared;
    mode_t before[4], after[4];  // 0 where a folder is missing
  } rows[] = {
      {"all new", false, {01757}, {01757, 01757, 01757, 01757}},
      {"all new, shared", true, {0711}, {0711, 0775, 0775, 0775}},
      {"no base", false, {}, {0751, 0774, 0774, 0774}},
      {"maker's there, shared", true, {0755, 0750}, {0755, 0750, 0750, 0775}},
      {"version missing", false, {0755, 0750, 0711}, {0755, 0750, 0711, 0750}},
      {"all there, shared", true, {0755, 0750, 0711, 0700}, {0755, 0750, 0711, 0700}},
  };
  const uid_t user = geteuid() == 0 ? kOrdinaryUser : geteuid();
  const gid_t group = geteuid() == 0 ? kOrdinaryUser : getegid();
  const auto prepare = [&](const fs::path& folder, mode_t mode) {
    fs::create_directory(folder);
    ASSERT_EQ(chown(folder.c_str(), user, group), 0);
    fs::permissions(folder, fs::perms(mode));
  };
  prepare(top, 0751);
  umask(0777);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    fs::remove_all(base);
    for (unsigned i = 0; i < 4 && row.before[i] != 0; ++i) prepare(folders[i], row.before[i]);
    std::string path = base;
    EXPECT_TRUE(esd::EnsureUpdaterFolder(path, row.shared));
    EXPECT_EQ(path, folders[3]);
    for (unsigned i = 0; i < 4; ++i) {
      EXPECT_EQ(Rights(folders[i]), RightsText(row.after[i], user, group)) << folders[i];
    }
  }
}

TEST_F(UpdaterFoldersTest, CannotBeMadeBelowAFile) {
  std::string path = "/proc/version";
  EXPECT_FALSE(esd::EnsureUpdaterFolder(path, false));
  EXPECT_EQ(path, "/proc/version");
}

TEST_F(UpdaterFoldersTest, LaunchAgentsLieBesideThePreferencesWhichAreMadeWhenAsked) {
  char buffer[1024];
  std::uint32_t error = 0;
  EXPECT_FALSE(esd::GetLaunchAgentsFolder(error, nullptr, 1024, true));
  EXPECT_EQ(error, 120U) << "without a buffer";
  EXPECT_FALSE(esd::GetLaunchAgentsFolder(error, buffer, sizeof buffer, false));
  EXPECT_EQ(error, 73U) << "without a folder";
  EXPECT_TRUE(esd::GetLaunchAgentsFolder(error, buffer, sizeof buffer, true));
  EXPECT_EQ(buffer, (home / "Library/Preferences/../LaunchAgents/").string());
}

}  // namespace
}  // namespace test
