// What a store makes of its file when that changes, is replaced, or cannot be looked at.
#include "esd/prefs/prefs_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include "esd/prefs/prefs_writer.h"
#include "tests/test_support.h"

namespace {

namespace fs = test::fs;
using esd::PrefsFile;
using test::ReadFile, test::WriteFile;

std::string Document(int value) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<Prefs>\n<A>" + std::to_string(value) +
         "</A>\n</Prefs>\n";
}

// A lock that is always to be had, so that the store looks at its file before each operation.
struct Policy : esd::LockPolicyInterface {
  bool Lock() override { return held = true; }
  bool Unlock(bool /*force*/) override { return !(held = false); }
  bool IsLocked() override { return held; }
  bool held = false;
};

class PrefsFileTest : public test::TreeTest {
 protected:
  PrefsFileTest() { WriteFile(path, Document(1)); }

  PrefsFile Remembered() const {
    PrefsFile file;
    file.Remember(*platform::StampOf(path.string()));
    return file;
  }
  static int Read(esd::PrefsWriter& store) {
    int value = 0;
    return store.GetPref("A", value, -1) ? value : -2;
  }

  const fs::path folder = top / "folder", path = folder / "prefs.dat";
  Policy policy;
};

TEST_F(PrefsFileTest, ChangedMeansNewerOrAnotherFile) {
  const PrefsFile file = Remembered();
  const auto time = fs::last_write_time(path);
  EXPECT_EQ(file.Look(path), PrefsFile::State::kSame);
  fs::last_write_time(path, time - std::chrono::hours(1));
  EXPECT_EQ(file.Look(path), PrefsFile::State::kSame) << "an older time";
  fs::last_write_time(path, time + std::chrono::nanoseconds(1));
  EXPECT_EQ(file.Look(path), PrefsFile::State::kChanged) << "a newer time";
  WriteFile(folder / "another", Document(2));
  fs::last_write_time(folder / "another", time - std::chrono::hours(1));
  fs::rename(folder / "another", path);
  EXPECT_EQ(file.Look(path), PrefsFile::State::kChanged) << "another file, though older";
  EXPECT_EQ(PrefsFile().Look(path), PrefsFile::State::kChanged) << "none is remembered";
}

// As a file system without a clock has it.
TEST_F(PrefsFileTest, FileWithoutATimeAlwaysCountsAsChanged) {
  fs::last_write_time(path, std::chrono::file_clock::from_sys(std::chrono::sys_seconds()));
  EXPECT_EQ(Remembered().Look(path), PrefsFile::State::kChanged);
}

TEST_F(PrefsFileTest, WhatItHasReplacedItselfHasNotChanged) {
  PrefsFile file = Remembered();
  EXPECT_TRUE(file.Replace(path, Document(2)));
  EXPECT_EQ(ReadFile(path), Document(2));
  EXPECT_EQ(file.Look(path), PrefsFile::State::kSame);
}

TEST_F(PrefsFileTest, OnlyAMissingFileIsGone) {
  const PrefsFile file = Remembered();
  EXPECT_EQ(file.Look(folder / "none"), PrefsFile::State::kGone);
  EXPECT_EQ(file.Look(path / "below a file"), PrefsFile::State::kGone);
  EXPECT_EQ(file.Look(folder / std::string(300, 'x')), PrefsFile::State::kUnknown);
}

// A folder on the way is closed to the store's user for a while.
TEST_F(PrefsFileTest, DocumentStaysWhileItsFileCannotBeLookedAtAndWritesFail) {
  chmod(top.c_str(), 0777);
  for (const fs::path& given : {folder, path}) {
    if (geteuid() != 0) continue;
    ASSERT_EQ(chown(given.c_str(), test::kOrdinaryUser, test::kOrdinaryUser), 0);
  }
  test::ExpectInChild([&] {
    test::BecomeOrdinaryUser();
    esd::PrefsWriter store(path, "Prefs");
    store.SetLockPolicy(&policy);
    EXPECT_TRUE(store.SetPref("A", 2));
    chmod(folder.c_str(), 0);
    EXPECT_EQ(Read(store), 2);
    EXPECT_FALSE(store.SetPref("A", 3));
    // Within the same lock the document may be out of date.
    EXPECT_TRUE(store.LockPrefs());
    chmod(folder.c_str(), 0700);
    EXPECT_FALSE(store.SetPref("A", 3));
    policy.Unlock(false);
    EXPECT_EQ(ReadFile(path), Document(2));
    EXPECT_TRUE(store.SetPref("A", 4));
    EXPECT_EQ(ReadFile(path), Document(4));
  });
}

TEST_F(PrefsFileTest, StoreSeesAFileThatWasPutInThePlaceOfItsOwnWithAnOlderTime) {
  esd::PrefsWriter store(path, "Prefs");
  store.SetLockPolicy(&policy);
  EXPECT_EQ(Read(store), 1);
  WriteFile(folder / "another", Document(2));
  fs::last_write_time(folder / "another", fs::last_write_time(path) - std::chrono::hours(1));
  fs::rename(folder / "another", path);
  EXPECT_EQ(Read(store), 2);
}

// A change that could not be saved stays in the document, and is no file that has gone.
TEST_F(PrefsFileTest, StoreForgetsTheFileOfAnotherPath) {
  esd::PrefsWriter store(path, "Prefs");
  store.SetPrefsPath(top / "no folder/other.dat");
  EXPECT_FALSE(store.SetPref("A", 7));
  store.SetLockPolicy(&policy);
  EXPECT_EQ(Read(store), 7);
}

TEST_F(PrefsFileTest, SaveUnderALockRemovesWhatKilledSavesLeft) {
  WriteFile(folder / ".prefs.dat.new-0123456789ab", "half");
  esd::PrefsWriter store(path, "Prefs");
  EXPECT_TRUE(store.Save());
  EXPECT_TRUE(fs::exists(folder / ".prefs.dat.new-0123456789ab")) << "without a lock";
  store.SetLockPolicy(&policy);
  EXPECT_TRUE(store.Save());
  EXPECT_EQ(test::Names(folder), test::Lines{"prefs.dat"});
}

TEST_F(PrefsFileTest, DeletingAllPreferencesSparesAFolderInTheFilesPlace) {
  esd::PrefsWriter store(path, "Prefs");
  fs::remove(path);
  WriteFile(path / "some file", "some text");
  EXPECT_FALSE(store.DeleteAllPrefs());
  EXPECT_EQ(ReadFile(path / "some file"), "some text");
}

}  // namespace
