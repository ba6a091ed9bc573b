// Each folder that the program knows by a number, the updater's own folders, and the launch
// agents'. Nobody sits at the screen here.

#include <unistd.h>

#include "esd/prefs/launch_agent.h"
#include "esd/prefs/updater_folders.h"
#include "esd/util/folder_tree.h"
#include "esd/util/special_folder.h"
#include "tests/test_support.h"
#include "welko/folder_path.h"

namespace test {
namespace {

const std::string kNotFound = "not found, and the path still 'before'";
const char* const kSupport = "Library/Application Support";

// The path that `find` gives, or what it leaves in the text "before" when it answers false.
std::string Found(const std::function<bool(std::string&)>& find) {
  std::string path = "before";
  return find(path) ? path : "not found, and the path still '" + path + "'";
}
std::string ById(unsigned id) {
  return Found([id](std::string& path) { return welko::GetFolderPath(id, path); });
}
std::string ByKind(unsigned kind, bool create) {
  return Found([=](std::string& path) { return esd::GetSpecialFolder(kind, path, create); });
}

// `path` made longer, with folders below it, until it has `size` bytes.
std::string Deep(std::string path, std::size_t size) {
  while (path.size() < size) path += path.size() % 100 == 0 && path.size() + 1 < size ? '/' : 'x';
  return path;
}

class FoldersTest : public TreeTest {
 protected:
  // A file in the place of a folder: nothing below it can be found or made.
  static void Block(const fs::path& path) {
    fs::remove_all(path);
    WriteFile(path, "");
  }
};

class FolderIdTest : public FoldersTest {
 protected:
  struct Folder {
    fs::path system;      // made when it is missing
    std::string product;  // added to it, and not made
    bool told = false;    // whether the result tells that the system's folder is lost
  };

  const fs::path support = root / kSupport, utilities = root / "Applications/Utilities";
  const fs::path shared = root / "Users/Shared", user_support = home / kSupport;
  const std::map<unsigned, Folder> folders = {
      {0, {root / "Applications", "", true}},
      {2, {support, "", true}},
      {3, {support, "", true}},
      {10, {home / "Documents", ""}},
      {12, {user_support, ""}},
      {13, {shared, ""}},
      {18, {support, "/Vantre"}},
      {19, {user_support, "/Vantre"}},
      {20, {shared, "/Vantre"}},
      {21, {support, "/Vantre/Welko"}},
      {22, {user_support, "/Vantre/Welko"}},
      {23, {shared, "/Vantre/Welko"}},
      {24, {utilities, "/Vantre Application Manager/"}},
      {25, {support, "/Vantre/Welko/Tarnik"}},
      {26, {user_support, "/Vantre/Welko/Tarnik"}},
      {27, {support, "/Vantre/VantreApplicationManager/OrlanRefs"}},
      {28, {support, "/Vantre/PeltRefs"}},
      {29, {support, "/Vantre/Vantre Desktop Common"}},
      {30, {utilities, "/Vantre Lumora/"}},
      {31, {root / "Library/Preferences", "", true}},
      {32, {home / "Library/Logs", "", true}},
  };
};

TEST_F(FolderIdTest, GivesTheSystemsFolderMadeAndTheProductsNot) {
  for (const auto& [id, folder] : folders) {
    SCOPED_TRACE("folder id " + std::to_string(id));
    for (const fs::path& place : {home, root}) fs::remove_all(place);
    fs::create_directory(home);
    EXPECT_EQ(ById(id), folder.system.string() + folder.product);
    EXPECT_TRUE(fs::is_directory(folder.system)) << folder.system << " is not made";
    EXPECT_TRUE(fs::is_empty(folder.system)) << "something is made in " << folder.system;
  }
}

TEST_F(FolderIdTest, TellsThatAFolderIsLostOnlyWhereNothingIsAddedOrItsResultSaysSo) {
  for (const fs::path& place : {home, root}) Block(place);
  for (const auto& [id, folder] : folders) {
    SCOPED_TRACE("folder id " + std::to_string(id));
    EXPECT_EQ(ById(id), folder.told ? kNotFound : "before" + folder.product);
  }
}

TEST_F(FolderIdTest, KnowsFoldersThatNobodyLooksForAndNoOtherNumbers) {
  for (const fs::path& place : {home, root}) fs::remove_all(place);
  EXPECT_EQ(ById(9), home);
  EXPECT_EQ(ById(15), "/tmp");
  for (const unsigned id : {1U, 4U, 5U, 6U, 7U, 8U, 11U, 14U, 33U})
    EXPECT_EQ(ById(id), kNotFound) << id;
}

TEST_F(FolderIdTest, EndsSystemPathsAt1023Bytes) {
  const std::string preferences = "/Library/Preferences";
  const std::string deep = Deep(root / "x", 1023 - preferences.size());
  setenv("WAKERLY_ROOT", deep.c_str(), 1);
  EXPECT_EQ(ById(31), deep + preferences);
  setenv("WAKERLY_ROOT", (deep + "x").c_str(), 1);
  EXPECT_EQ(ById(31), kNotFound);
}

// Runs a second time in a bundle, where the environment says what is to be found.
TEST_F(FolderIdTest, KnowsTheOwnBundle) {
  const char* const bundle = getenv("EXPECTED_BUNDLE");
  const fs::path expected = bundle != nullptr ? fs::path(bundle) : fs::canonical("/proc/self/exe");
  EXPECT_EQ(ById(16), expected);
  EXPECT_EQ(ById(17), expected.parent_path());
}

TEST_F(FolderIdTest, KnowsTheOwnBundleInsideOfOne) {
  const fs::path bundle = fs::canonical(top) / "Some.app", program = bundle / "Contents/MacOS/Some";
  fs::create_directories(program.parent_path());
  fs::copy_file("/proc/self/exe", program);
  EXPECT_EQ(InChild([&] {
              setenv("EXPECTED_BUNDLE", bundle.c_str(), 1);
              return execl(program.c_str(), program.c_str(),
                           "--gtest_filter=FolderIdTest.KnowsTheOwnBundle", nullptr);
            }),
            0);
}

class SpecialFolderTest : public FoldersTest {
 protected:
  SpecialFolderTest() { setenv("TMPDIR", temporary.c_str(), 1); }

  const fs::path temporary = top / "temporary";
  // The place in the table is the kind.
  const fs::path folders[14] = {temporary,
                                temporary,
                                root / "tmp",
                                home / "Desktop",
                                home / "Documents",
                                home / "Library/Caches",
                                home / "Library/Preferences",
                                home / kSupport,
                                root / kSupport,
                                root / kSupport,
                                root / "Library/Fonts",
                                root / "System",
                                root / "System",
                                root / kSupport};
};

TEST_F(SpecialFolderTest, IsMadeOnlyWhenAsked) {
  for (unsigned kind = 0; kind < std::size(folders); ++kind) {
    SCOPED_TRACE("kind " + std::to_string(kind));
    for (const fs::path& place : {home, root, temporary}) fs::remove_all(place);
    EXPECT_EQ(ByKind(kind, false), kNotFound);
    EXPECT_FALSE(fs::exists(folders[kind])) << folders[kind] << " is made";
    EXPECT_EQ(ByKind(kind, true), folders[kind]);
    EXPECT_TRUE(fs::is_directory(folders[kind])) << folders[kind] << " is not made";
    EXPECT_EQ(ByKind(kind, false), folders[kind]);
  }
}

TEST_F(SpecialFolderTest, NeedsNoLookUpAtTheEndsOfTheTable) {
  unsetenv("TMPDIR");
  EXPECT_EQ(ByKind(0, false), "/tmp");
  EXPECT_EQ(ByKind(14, false), "/");
  EXPECT_EQ(ByKind(15, true), kNotFound);
}

using UpdaterFoldersTest = FoldersTest;

TEST_F(UpdaterFoldersTest, AreNotMadeBelowTheMachinesFolders) {
  EXPECT_EQ(esd::GetUninstallStampPath(), std::nullopt);
  EXPECT_EQ(Found(esd::GetNotifierExecutablePath), "not found, and the path still ''");
  EXPECT_TRUE(fs::is_empty(root));
}

TEST_F(UpdaterFoldersTest, FallBackToTheTemporaryFolder) {
  Block(home / "Library");
  EXPECT_EQ(esd::GetUserCacheFolder(), root / "tmp/Vantre");
  EXPECT_EQ(Found(esd::GetUpdaterPrefsFolder), root / "tmp/Vantre/OrlanUpdater/1.0");
  Block(root / "tmp");
  EXPECT_EQ(esd::GetUserCacheFolder(), std::nullopt);
  EXPECT_EQ(Found(esd::GetUpdaterPrefsFolder), kNotFound);
}

// New folders have the mode of the one above, or are shared, and belong to whom that belongs.
TEST_F(UpdaterFoldersTest, KeepTheirRightsOrTakeThoseAbove) {
  const char* const names[] = {"base", "base/Vantre", "base/Vantre/OrlanUpdater",
                               "base/Vantre/OrlanUpdater/1.0"};
  const struct {
    const char* name;
    bool shared;
    mode_t before[4], after[4];  // 0 where a folder is missing
  } rows[] = {
      {"all new", false, {01757}, {01757, 01757, 01757, 01757}},
      {"all new, shared", true, {0711}, {0711, 0775, 0775, 0775}},
      {"no base", false, {}, {0751, 0774, 0774, 0774}},
      {"maker's there", false, {0755, 0750}, {0755, 0750, 0750, 0750}},
      {"maker's there, shared", true, {0755, 0750}, {0755, 0750, 0750, 0775}},
      {"version missing", false, {0755, 0750, 0711}, {0755, 0750, 0711, 0750}},
      {"all there", false, {0755, 0750, 0711, 0700}, {0755, 0750, 0711, 0700}},
      {"all there, shared", true, {0755, 0750, 0711, 0700}, {0755, 0750, 0711, 0700}},
  };
  const bool is_root = geteuid() == 0;  // nobody else can give folders away
  fs::permissions(top, fs::perms(0751));
  umask(0777);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    fs::remove_all(top / names[0]);
    std::string expected[4];
    unsigned owner = geteuid(), group = getegid();
    for (unsigned i = 0; i < 4; ++i) {
      if (row.before[i] != 0) {
        fs::create_directory(top / names[i]);
        if (is_root) owner = 2000 + i, group = 3000 + i;
        ASSERT_EQ(chown((top / names[i]).c_str(), owner, group), 0);
        fs::permissions(top / names[i], fs::perms(row.before[i]));
      }
      expected[i] = RightsText(row.after[i], owner, group);
    }
    std::string path = top / names[0];
    EXPECT_TRUE(esd::EnsureUpdaterFolder(path, row.shared));
    EXPECT_EQ(path, top / names[3]);
    for (unsigned i = 0; i < 4; ++i) EXPECT_EQ(Rights(top / names[i]), expected[i]) << names[i];
  }
}

TEST_F(UpdaterFoldersTest, CannotBeMadeBelowAFileButCountAsMadeWhereOneHasTheName) {
  std::string path = "/proc/version";
  EXPECT_FALSE(esd::EnsureUpdaterFolder(path, false));
  EXPECT_EQ(path, "/proc/version");
  EXPECT_TRUE(esd::CreateFolderTree(path));
  EXPECT_FALSE(esd::CreateFolderTree("/"));
}

class LaunchAgentTest : public FoldersTest {
 protected:
  // What GetLaunchAgentsFolder writes to a buffer of `size` bytes, or its error.
  static std::string Folder(std::size_t size, bool create) {
    std::string buffer(size + 1, '?');
    std::uint32_t error = 1;
    const bool found = esd::GetLaunchAgentsFolder(error, buffer.data(), size, create);
    return found && error == 0 ? buffer.substr(0, buffer.find('\0'))
                               : "error " + std::to_string(error);
  }

  // Whether the scheduled task is present, or the error.
  static std::string Task() {
    std::uint32_t error = 1;
    const bool present = esd::IsScheduledTaskPresent(error, L"Some label");
    return error != 0 ? "error " + std::to_string(error) : present ? "present" : "absent";
  }

  const fs::path preferences = home / "Library/Preferences";
  const std::string name = "com.vantre.VantreOrlanUpdater-1.0.plist";
};

TEST_F(LaunchAgentTest, FolderNeedsABuffer) {
  std::uint32_t error = 1;
  EXPECT_FALSE(esd::GetLaunchAgentsFolder(error, nullptr, 100, true));
  EXPECT_EQ(error, 120U);
  EXPECT_EQ(Folder(0, true), "error 120");
}

TEST_F(LaunchAgentTest, FolderLiesBesidePreferencesWhichAreMadeWhenAsked) {
  EXPECT_EQ(Folder(1024, false), "error 73");
  EXPECT_EQ(Folder(1024, true), preferences.string() + "/../LaunchAgents/");
  EXPECT_EQ(Folder(1024, false), preferences.string() + "/../LaunchAgents/");
}

TEST_F(LaunchAgentTest, FolderIsCutWhereTheBufferEnds) {
  const std::string whole = Folder(1024, true);
  for (const std::size_t size : {std::size_t{1}, std::size_t{9}, whole.size(), whole.size() + 1}) {
    EXPECT_EQ(Folder(size, true), whole.substr(0, size - 1)) << "a buffer of " << size;
  }
}

TEST_F(LaunchAgentTest, IsPresentWhenItsFileIsNotEmpty) {
  EXPECT_EQ(Task(), "error 73");
  fs::create_directories(preferences);
  EXPECT_EQ(Task(), "absent");
  WriteFile(home / "Library/LaunchAgents" / name, "");
  EXPECT_EQ(Task(), "absent");
  WriteFile(home / "Library/LaunchAgents" / name, "text");
  EXPECT_EQ(Task(), "present");
}

TEST_F(LaunchAgentTest, IsLookedForUnderANameCutAt1023Bytes) {
  const std::string between = "/Library/Preferences/../LaunchAgents/";
  const std::string deep = Deep(home / "x", 1023 + 3 - between.size() - name.size());
  setenv("HOME", deep.c_str(), 1);
  fs::create_directories(deep + "/Library/Preferences");
  WriteFile(deep + "/Library/LaunchAgents/" + name, "text");
  EXPECT_EQ(Task(), "absent");
  WriteFile(deep + "/Library/LaunchAgents/" + name.substr(0, name.size() - 3), "text");
  EXPECT_EQ(Task(), "present");
}

}  // namespace
}  // namespace test
