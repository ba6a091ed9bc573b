#include "esd/util/delete_path.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/system_stand_in.h"
#include "tests/test_support.h"

namespace test {
namespace {

class DeletePathTest : public TreeTest {
 protected:
  DeletePathTest() {
    WriteFile(file, "");
    fs::permissions(top, fs::perms(0755));
    fs::permissions(work, fs::perms(0777));
  }
  ~DeletePathTest() override { System() = {}; }

  // Changes a file's attributes. False where the user or the file system does not allow it.
  static bool Chattr(const std::string& change, const fs::path& path) {
    return std::system(("chattr " + change + " " + path.string() + " 2>/dev/null").c_str()) == 0;
  }

  const fs::path work = top / "work", file = work / "file";
};

TEST_F(DeletePathTest, RemovesWhateverStandsThereAndNotWhatALinkPointsTo) {
  WriteFile(home / "kept", "");
  WriteFile(work / "tree/folder/file", "");
  for (const char* link : {"tree/link", "link", "another link"}) {
    fs::create_symlink(home, work / link);
  }
  fs::create_symlink(top / "nothing", work / "dangling link");
  ASSERT_EQ(mkfifo((work / "fifo").c_str(), 0666), 0);
  for (const char* name : {"file", "tree", "link", "another link/", "dangling link", "fifo",
                           "nothing", "nothing/below it"}) {
    EXPECT_TRUE(esd::DeletePath(work / name)) << name;
  }
  EXPECT_EQ(Text(Names(work)), "");
  EXPECT_TRUE(fs::exists(home / "kept"));
}

TEST_F(DeletePathTest, RemovesLockedFilesWithTheirTreeAndNotAlone) {
  WriteFile(work / "tree/file", "");
  Chattr("+i", work / "tree/file");
  const bool locked = Chattr("+i", file);
  EXPECT_EQ(esd::CouldDeleteFile(file), !locked);
  const std::size_t open_files = Names("/proc/self/fd").size();
  EXPECT_TRUE(esd::DeletePath(work / "tree"));
  EXPECT_EQ(Names("/proc/self/fd").size(), open_files);
  EXPECT_EQ(esd::DeletePath(file), !locked);
  EXPECT_EQ(Text(Names(work)), locked ? "file\n" : "");
  Chattr("-R -i", work);
}

TEST_F(DeletePathTest, LeavesAFileOnALockedVolumeAlone) {
  const fs::path volume = work / "volume";
  WriteFile(volume / "file", "");
  fs::create_symlink(file, volume / "link to a free file");
  fs::create_symlink(volume / "file", work / "link to a locked file");
  System() = {.locked_volume = fs::canonical(volume)};
  const std::pair<const char*, bool> rows[] = {{"volume/file", false},
                                               {"volume/link to a free file", false},
                                               {"link to a locked file", true},
                                               {"file", true}};
  for (const auto& [path, removed] : rows) {
    EXPECT_EQ(esd::CouldDeleteFile(work / path), removed) << path;
    EXPECT_EQ(esd::DeletePath(work / path), removed) << path;
    EXPECT_EQ(fs::exists(fs::symlink_status(work / path)), !removed) << path;
  }
}

// A tree that cannot go whole keeps what cannot be removed, and nothing else.
TEST_F(DeletePathTest, FailsForATreeOfWhichSomethingStays) {
  WriteFile(work / "tree/closed/file", "");
  WriteFile(work / "tree/file", "");
  fs::permissions(work / "tree", fs::perms(0777));
  fs::permissions(work / "tree/closed", fs::perms(0555));
  ExpectInChild([this] {
    BecomeOrdinaryUser();
    EXPECT_FALSE(esd::DeletePath(work / "tree"));
    EXPECT_FALSE(esd::DeletePath(work / "tree/closed/file")) << "which stays";
  });
  fs::permissions(work / "tree/closed", fs::perms(0755));
  EXPECT_EQ(Text(Names(work / "tree")), "closed\n");
}

// What counts is the mode of the file, not that of its folder.
TEST_F(DeletePathTest, LeavesAFileAloneThatAnOrdinaryUserMayNotWrite) {
  const bool is_root = geteuid() == 0;
  const uid_t user = is_root ? kOrdinaryUser : geteuid();
  const gid_t group = is_root ? kOrdinaryUser : getegid();
  constexpr gid_t kAlsoMember = 65533, kNoMember = 65532;
  const struct {
    const char* name;
    uid_t owner;
    gid_t group;
    mode_t mode;
    bool removed;
  } rows[] = {
      {"the owner may", user, group, 0200, true},
      {"the owner may not", user, group, 0466, false},
      {"the user's group may", 0, group, 0060, true},
      {"the user's group may not", 0, group, 0606, false},
      {"another group of the user may not", 0, kAlsoMember, 0606, false},
      {"neither owner nor member", 0, kNoMember, 0400, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    if (!is_root && row.owner != user) break;  // an ordinary user has no files but its own
    WriteFile(file, "");
    ASSERT_EQ(chown(file.c_str(), row.owner, row.group), 0);
    fs::permissions(file, fs::perms(row.mode));
    ExpectInChild([&] {
      ASSERT_TRUE(!is_root || setgroups(1, &kAlsoMember) == 0);
      ASSERT_EQ(setgid(group), 0);
      ASSERT_EQ(setuid(user), 0);
      EXPECT_EQ(esd::CouldDeleteFile(file), row.removed);
      EXPECT_EQ(esd::DeletePath(file), row.removed);
    });
    EXPECT_EQ(fs::exists(file), !row.removed);
    fs::remove(file);
  }
}

// What is foretold must come to pass: the file's own rights are the rows above.
TEST_F(DeletePathTest, ForetellsWhatTheFoldersRightsAllow) {
  if (geteuid() != 0) return;  // nobody else has other users' folders
  const struct {
    const char* name;
    uid_t folder_owner;
    mode_t folder_mode;
    uid_t owner;
    bool removed;
  } rows[] = {{"one's own folder", kOrdinaryUser, 0700, 0, true},
              {"one's own closed folder", kOrdinaryUser, 0500, kOrdinaryUser, false},
              {"everybody's folder", 0, 0777, 0, true},
              {"root's folder", 0, 0755, kOrdinaryUser, false},
              {"a sticky folder, another's file", 0, 01777, 0, false},
              {"a sticky folder, one's own file", 0, 01777, kOrdinaryUser, true},
              {"one's own sticky folder", kOrdinaryUser, 01777, 0, true}};
  const Lines kinds = {"file", "link", "fifo", "folder", "nothing"};
  for (const auto& row : rows) {
    fs::remove_all(work);
    WriteFile(file, "");
    fs::create_symlink("gone", work / "link");
    ASSERT_EQ(mkfifo((work / "fifo").c_str(), 0666), 0);
    fs::create_directory(work / "folder");
    for (const std::string& kind : kinds) {
      if (kind == "nothing") continue;
      ASSERT_EQ(lchown((work / kind).c_str(), row.owner, row.owner), 0);
    }
    ASSERT_EQ(chown(work.c_str(), row.folder_owner, kOrdinaryUser), 0);
    fs::permissions(work, fs::perms(row.folder_mode));
    ExpectInChild([&] {
      BecomeOrdinaryUser();
      for (const std::string& kind : kinds) {
        const bool removed = kind == "nothing" || (row.removed && kind != "folder");
        EXPECT_EQ(esd::CouldDeleteFile(work / kind), removed) << row.name << ": " << kind;
        EXPECT_EQ(esd::DeleteFile(work / kind), removed) << row.name << ": " << kind;
      }
    });
  }
  WriteFile(top / "own", "");
  fs::current_path(top);
  EXPECT_TRUE(esd::CouldDeleteFile("own"));
}

}  // namespace
}  // namespace test
