// A preference file as a store: its entries, its lock, and what it makes of a file that changes.
#include <sys/stat.h>

#include <functional>

#include "esd/prefs/map_pref.h"
#include "esd/prefs/prefs_lock.h"
#include "tests/test_support.h"

namespace {

namespace fs = test::fs;
using test::ReadFile, test::WriteFile;

struct Policy : esd::LockPolicyInterface {
  bool Lock() override { return !refuses && ++taken > 0; }
  bool Unlock(bool) override { return ++given_back > 0; }
  bool IsLocked() override { return taken > given_back; }
  int taken = 0, given_back = 0;
  bool refuses = false;
};

const std::string kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n";
constexpr const char *kDefault = "the default", *kRefused = "refused";

struct Store : esd::PrefsWriter {
  Store(const std::string& path, Policy* policy) : PrefsWriter("", "Prefs") {
    SetLockPolicy(policy);
    SetPrefsPath(path);
  }
  // The number as text, kDefault or kRefused.
  std::string Read(const std::string& key) {
    int number = 0;
    if (!GetPref(key, number, -111)) return kRefused;
    return number == -111 ? kDefault : std::to_string(number);
  }
  bool Replace(const std::string& key) {
    return SetPref(key, std::make_unique<esd::XMLDocumentNode>("New"));
  }
};

std::string Document(const std::string& entries) {
  return kHead + "<Prefs>\n" + entries + "</Prefs>\n";
}

struct PrefsStore : test::TreeTest {
  // Runs `body` with each way to lock a store of a file with `text`.
  void ForEachLock(const std::string& text,
                   const std::function<void(Store&, Policy&, bool has_lock, bool caller)>& body) {
    for (const auto& [name, has_lock, caller] : {std::tuple("without a lock", false, false),
                                                 {"with a free lock", true, false},
                                                 {"under the caller's lock", true, true}}) {
      SCOPED_TRACE(std::string(name) + ", from \"" + text + '"');
      WriteFile(path, text);
      Policy lock;
      if (caller) lock.Lock();
      Store store(path, has_lock ? &lock : nullptr);
      body(store, lock, has_lock, caller);
    }
  }
  const fs::path folder = top / "folder", path = folder / "prefs.dat";
  const std::string one = Document("<A>1</A>\n"), two = Document("<A>2</A>\n");
  const std::string malformed = Document("<A>1</B>");
  Policy policy;
};

TEST_F(PrefsStore, ReadsWhatStandsFirstOrTheDefaultOrNoValueAtAll) {
  WriteFile(path, Document("<One>1</One><One>2</One><Empty/><Words> a b </Words><N>  42 </N>"));
  Store store(path, nullptr);
  constexpr const char* kRows[][3] = {{"One", "1", "1"},
                                      {"one", "none", kDefault},
                                      {"Empty", "none", kDefault},
                                      {"Words", " a b ", kRefused},
                                      {"N", "  42 ", "42"}};
  for (const auto& [key, as_text, as_number] : kRows) {
    std::string text;
    EXPECT_TRUE(store.GetPref<std::string>(key, text, "none")) << key;
    EXPECT_EQ(text, as_text) << key;
    EXPECT_EQ(store.Read(key), as_number) << key;
  }
}

TEST_F(PrefsStore, AppendsNewEntriesAndChangesOldOnesWhereTheyStand) {
  const std::string foreign = "<F x=\"1\">\n<A>7</A>\n</F>\n", second = "<A>9</A>\n";
  WriteFile(path, Document("<Old>1</Old>\n" + foreign + "<A>0</A>\n" + second));
  Store store(path, nullptr);
  EXPECT_TRUE(store.SetPref("B", false));
  EXPECT_TRUE(store.SetPref("C", ~0UL));
  EXPECT_TRUE(store.SetPref("A", -1));
  EXPECT_TRUE(store.SetPref<std::string>("D", " a & b "));
  EXPECT_TRUE(store.Replace("Old"));
  EXPECT_EQ(ReadFile(path),
            Document(foreign + "<A>-1</A>\n" + second + "<B>0</B>\n<C>18446744073709551615</C>\n" +
                     "<D> a &amp; b </D>\n<New></New>\n"));
}

// A killed program may leave a file without a byte.
TEST_F(PrefsStore, IsEmptyWithoutARootOfItsOwnAndTheFirstWriteMakesTheWholeFile) {
  const std::pair<std::string, std::string> rows[] = {
      {"", one}, {"<Other/>", kHead + "<Other></Other>\n<Prefs>\n<A>1</A>\n</Prefs>\n"}};
  for (const auto& row : rows) {
    ForEachLock(row.first, [&](Store& store, Policy&, bool, bool) {
      EXPECT_EQ(store.Read("A"), kDefault);
      EXPECT_EQ(ReadFile(path), row.first);
      EXPECT_TRUE(store.SetPref("A", 1));
      EXPECT_EQ(ReadFile(path), row.second);
    });
  }
}

TEST_F(PrefsStore, RemovesAMalformedFileOnlyWhenTheLoadTakesTheLock) {
  ForEachLock(malformed, [&](Store& store, Policy&, bool has_lock, bool caller) {
    const bool removes = has_lock && !caller;
    EXPECT_EQ(fs::exists(path), !removes);
    EXPECT_EQ(store.Read("A"), kDefault);
    EXPECT_EQ(store.Replace("A"), removes);
    EXPECT_EQ(store.SetPref("A", 1), removes);
    EXPECT_EQ(ReadFile(path), removes ? Document("<New></New>\n<A>1</A>\n") : malformed);
  });
}

TEST_F(PrefsStore, LoadsAFileAgainThatIsNewerOrAnotherOne) {
  using std::chrono::file_clock, std::chrono::hours, std::chrono::nanoseconds;
  const std::tuple<const char*, std::string, nanoseconds, bool, const char*> steps[] = {
      {"first", one, hours(2), false, "1"},
      {"older", two, hours(1), false, "1"},
      {"newer", two, hours(2) + nanoseconds(1), false, "2"},
      {"another file, though older", one, hours(1), true, "1"},
      {"another file, without a time", two, hours(0), true, "2"},
      {"still without a time", one, hours(0), false, "1"},
      {"malformed", malformed, hours(3), false, kDefault},
      {"good again", two, hours(4), false, "2"}};
  Store store(path, &policy);
  for (const auto& [name, text, time, is_another, found] : steps) {
    const fs::path changed = is_another ? top / "another" : path;
    WriteFile(changed, text);
    fs::last_write_time(changed, file_clock::from_sys(std::chrono::sys_time<nanoseconds>(time)));
    fs::rename(changed, path);
    EXPECT_EQ(store.Read("A"), found) << name;
    EXPECT_EQ(ReadFile(path), text) << name;
  }
}

TEST_F(PrefsStore, IsEmptyWhenItsFileIsGone) {
  for (const fs::path& gone : {path, folder}) {
    fs::create_directory(folder);
    Store store(path, &policy);
    EXPECT_TRUE(store.SetPref("A", 1));
    fs::remove_all(gone);
    if (gone == folder) WriteFile(folder, "in its place");
    EXPECT_EQ(store.Read("A"), kDefault) << "without " << gone;
  }
}

// A folder on the way is closed to the store's user for a while.
TEST_F(PrefsStore, KeepsItsEntriesAndDoesNotWriteWhileItsFileCannotBeLookedAt) {
  chmod(top.c_str(), 0777);
  test::ExpectInChild([&] {
    test::BecomeOrdinaryUser();
    WriteFile(path, one);
    Store store(path, &policy);
    chmod(folder.c_str(), 0);
    EXPECT_EQ(store.Read("A"), "1");
    EXPECT_FALSE(store.SetPref("A", 3));
    // Within the same lock the document may be out of date.
    EXPECT_TRUE(store.LockPrefs());
    chmod(folder.c_str(), 0700);
    EXPECT_FALSE(store.SetPref("A", 3));
    policy.Unlock(false);
    EXPECT_EQ(ReadFile(path), one);
    EXPECT_TRUE(store.SetPref("A", 2));
    EXPECT_EQ(ReadFile(path), two);
  });
}

// A change that could not be saved stays in the document, and is no file that has gone.
TEST_F(PrefsStore, ForgetsTheFileOfAnotherPath) {
  WriteFile(path, one);
  Store store(path, nullptr);
  store.SetPrefsPath(top / "no folder/other.dat");
  EXPECT_FALSE(store.SetPref("A", 7));
  store.SetLockPolicy(&policy);
  EXPECT_EQ(store.Read("A"), "7");
}

TEST_F(PrefsStore, RemovesUnderALockWhatKilledSavesLeftAndNothingElse) {
  const std::string left = ".prefs.dat.new-0123456789ab";
  const test::Lines others = {".other.dat.new-0123456789ab", ".prefs.dat.new-0123456789a",
                              ".prefs.dat.new-0123456789xy", "prefs.dat.new-0123456789ab"};
  for (const std::string& name : others) WriteFile(folder / name, "");
  ForEachLock(one, [&](Store& store, Policy&, bool has_lock, bool) {
    WriteFile(folder / left, "half");
    EXPECT_TRUE(store.Save());
    EXPECT_EQ(fs::exists(folder / left), !has_lock);
    for (const std::string& name : others) EXPECT_TRUE(fs::exists(folder / name)) << name;
  });
}

TEST_F(PrefsStore, DoesNothingWhileItsLockCannotBeHad) {
  WriteFile(path, one);
  Store store(path, &policy);
  esd::XMLDocumentNode* node = nullptr;
  policy.refuses = true;
  EXPECT_EQ(store.Read("A"), kRefused);
  EXPECT_FALSE(store.GetPref("A", node));
  EXPECT_FALSE(store.SetPref("A", 2));
  EXPECT_FALSE(store.Replace("A"));
  EXPECT_FALSE(store.Save());
  EXPECT_FALSE(store.DeleteAllPrefs());
  store.EmptyDOM();
  store.SetPrefsPath(top / "other");
  policy.refuses = false;
  EXPECT_TRUE(store.Save());
  EXPECT_EQ(ReadFile(path), one) << "as before, for nothing was done to the document";
  EXPECT_FALSE(fs::exists(top / "other")) << "the store has left its file";
}

TEST_F(PrefsStore, TakesItsLockOnceForABatchAndGivesItBack) {
  Store store(path, &policy);
  {
    const esd::PrefsLock lock(store);
    store.SetPref("A", 2);
  }
  EXPECT_EQ(policy.taken, 2) << "by the load and by the batch";
  EXPECT_FALSE(policy.IsLocked()) << "after the batch";
  EXPECT_THROW(store.SetPrefsPath(""), std::runtime_error);
  EXPECT_FALSE(policy.IsLocked()) << "after an empty path";
}

TEST_F(PrefsStore, KeepsItsLockPolicyWhileThatHoldsTheLock) {
  Store store(path, &policy);
  Policy other;
  policy.Lock();
  store.SetLockPolicy(&other);
  EXPECT_TRUE(store.lock_policy() == &policy) << "it was replaced while it held the lock";
  policy.Unlock(false);
  store.SetLockPolicy(&other);
  EXPECT_TRUE(store.lock_policy() == &other) << "it was not replaced while it was free";
}

TEST_F(PrefsStore, DeletesAllAndGivesBackTheLockThatItTook) {
  ForEachLock(one, [&](Store& store, Policy& lock, bool, bool caller) {
    EXPECT_TRUE(store.DeleteAllPrefs());
    EXPECT_EQ(lock.IsLocked(), caller);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(store.Read("A"), kDefault);
  });
}

// A folder in the file's place is not deleted.
TEST_F(PrefsStore, KeepsLockAndEntriesWhenTheFileCannotBeDeleted) {
  ForEachLock(one, [&](Store& store, Policy& lock, bool has_lock, bool) {
    fs::remove(path);
    WriteFile(path / "some file", "some text");
    EXPECT_FALSE(store.DeleteAllPrefs());
    EXPECT_EQ(lock.IsLocked(), has_lock);
    EXPECT_EQ(store.Read("A"), "1");
    EXPECT_EQ(ReadFile(path / "some file"), "some text");
    fs::remove_all(path);
  });
}

std::string Entry(const std::string& key, const std::string& value) {
  return "<MapPrefEntry MapPrefKey=\"" + key + "\">" + value + "</MapPrefEntry>\n";
}

struct MapPrefs : PrefsStore {
  MapPrefs() {
    fs::create_directory(folder);
    flags.SetStore(&store);
    texts.SetStore(&store);
  }
  Store store{path, nullptr};
  esd::MapPref<std::string, bool> flags{"Flags"};
  esd::MapPref<std::string, std::string> texts{"Texts"};
};

TEST_F(MapPrefs, AreElementsSortedByKeyThatKeepTheirBlanks) {
  const std::map<std::string, std::string> blanks = {{"a b", "  c\td "}, {"e", ""}};
  EXPECT_TRUE(flags.Set({{"B", false}, {"A", true}}));
  EXPECT_TRUE(texts.Set(blanks));
  const std::string words = "<Texts>\n" + Entry("a b", "  c\td ") + Entry("e", "") + "</Texts>\n";
  EXPECT_EQ(ReadFile(path),
            Document("<Flags>\n" + Entry("A", "1") + Entry("B", "0") + "</Flags>\n" + words));
  EXPECT_TRUE(flags.Set({}));
  EXPECT_EQ(ReadFile(path), Document(words + "<Flags></Flags>\n"));
  store.SetPrefsPath(path);
  std::map<std::string, std::string> found = {{"left", "over"}};
  EXPECT_TRUE(texts.Get(found));
  EXPECT_EQ(found, blanks);
}

TEST_F(MapPrefs, AreSetAgainOnceTheirFileIsGood) {
  WriteFile(path, malformed);
  store.SetPrefsPath(path);
  store.SetLockPolicy(&policy);
  EXPECT_FALSE(flags.Set({})) << "while it is malformed";
  WriteFile(path, one);
  EXPECT_TRUE(flags.Set({}));
}

TEST_F(MapPrefs, ReadBooleansOrNothingAtAll) {
  const std::tuple<const char*, std::string, bool, std::map<std::string, bool>> rows[] = {
      {"both values", Entry("a", "1") + Entry("b", " 0 "), true, {{"a", true}, {"b", false}}},
      {"a key twice", Entry("a", "1") + Entry("a", "0"), true, {{"a", false}}},
      {"no key", Entry("a", "1") + "<MapPrefEntry Key=\"b\">1</MapPrefEntry>", false, {}},
      {"a bad value", Entry("a", "1") + Entry("b", "yes"), false, {}}};
  for (const auto& [name, elements, good, expected] : rows) {
    WriteFile(path, Document("<Flags>" + elements + "</Flags>"));
    store.SetPrefsPath(path);
    std::map<std::string, bool> found = {{"left over", true}};
    EXPECT_EQ(flags.Get(found), good) << name;
    EXPECT_EQ(found, expected) << name;
  }
}

}  // namespace
