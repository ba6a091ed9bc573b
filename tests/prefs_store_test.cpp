#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
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
    int number = -222;
    if (GetPref(key, number, -111)) return number == -111 ? kDefault : std::to_string(number);
    EXPECT_EQ(number, -222) << "a read of " << key << " that failed has changed its target";
    return kRefused;
  }
  bool Replace(const std::string& key) {
    return SetPref(key, std::make_unique<esd::XMLDocumentNode>("New"));
  }
};

std::string Document(const std::string& entries) {
  return kHead + "<Prefs>\n" + entries + "</Prefs>\n";
}

struct PrefsStore : test::TreeTest {
  // Runs `body` with each way to lock a store of a file with `text`. `caller` holds the lock or
  // not.
  void ForEachLock(const std::string& text,
                   const std::function<void(Store&, Policy&, bool has_lock, bool caller)>& body) {
    for (const auto& [name, has_lock, caller] : {std::tuple("without a lock", false, false),
                                                 {"with a free lock", true, false},
                                                 {"under the caller's lock", true, true}}) {
      SCOPED_TRACE(std::string(name) + ", from " + text.substr(0, text.find('\0')));
      WriteFile(path, text);
      Policy lock;
      if (caller) lock.Lock();
      Store store(path, has_lock ? &lock : nullptr);
      body(store, lock, has_lock, caller);
    }
  }
  // What another process does, a second later.
  void SaveElsewhere(const std::string& text) const {
    const auto later = fs::last_write_time(path) + std::chrono::seconds(1);
    WriteFile(path, text);
    fs::last_write_time(path, later);
  }
  const fs::path folder = top / "folder", path = folder / "prefs.dat";
  const std::string one = Document("<A>1</A>\n");
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
  WriteFile(path, Document(foreign + "<A>0</A>\n" + second));
  Store store(path, nullptr);
  EXPECT_TRUE(store.SetPref("B", false));
  EXPECT_TRUE(store.SetPref("C", ~0UL));
  EXPECT_TRUE(store.SetPref("A", -1));
  EXPECT_TRUE(store.SetPref<std::string>("D", " a & b "));
  EXPECT_EQ(ReadFile(path), Document(foreign + "<A>-1</A>\n" + second + "<B>0</B>\n" +
                                     "<C>18446744073709551615</C>\n<D> a &amp; b </D>\n"));
}

TEST_F(PrefsStore, HandsOutItsNodesAndPutsANewOneAtTheEnd) {
  WriteFile(path, Document("<A>1</A>\n<B>2</B>\n<A>3</A>\n"));
  Store store(path, nullptr);
  EXPECT_TRUE(store.Replace("A"));
  esd::XMLDocumentNode* node = nullptr;
  ASSERT_TRUE(store.GetPref("B", node));
  node->SetData("7");
  EXPECT_TRUE(store.Save());
  EXPECT_EQ(ReadFile(path), Document("<B>7</B>\n<A>3</A>\n<New></New>\n"));
  EXPECT_FALSE(store.GetPref("C", node));
  EXPECT_EQ(node, nullptr);
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
  for (const std::string& bad : {Document("<A>1</B>"), one + "<", std::string(3000, '\0')}) {
    ForEachLock(bad, [&](Store& store, Policy&, bool has_lock, bool caller) {
      const bool removes = has_lock && !caller;
      EXPECT_EQ(fs::exists(path), !removes);
      EXPECT_EQ(store.Read("A"), kDefault);
      EXPECT_EQ(store.Replace("A"), removes);
      EXPECT_EQ(store.SetPref("A", 1), removes);
      EXPECT_EQ(ReadFile(path), removes ? Document("<New></New>\n<A>1</A>\n") : bad);
    });
  }
}

TEST_F(PrefsStore, FollowsWhatAnotherProcessMakesOfTheFile) {
  const std::string malformed = Document("<A>3</B>");
  WriteFile(path, one);
  Store store(path, &policy);
  SaveElsewhere(malformed);
  EXPECT_EQ(store.Read("A"), kDefault) << "from a malformed file";
  EXPECT_FALSE(store.SetPref("A", 1));
  EXPECT_EQ(ReadFile(path), malformed);
  SaveElsewhere(Document("<A>2</A>"));
  EXPECT_EQ(store.Read("A"), "2") << "from a good file";
  WriteFile(top / "older", Document("<A>5</A>"));
  fs::last_write_time(top / "older", fs::last_write_time(path) - std::chrono::hours(1));
  fs::rename(top / "older", path);
  EXPECT_EQ(store.Read("A"), "5") << "from an older file in its place";
  fs::remove(path);
  EXPECT_EQ(store.Read("A"), kDefault) << "without a file";
}

// A file with two names is written over, so that nothing but its time tells of a save.
TEST_F(PrefsStore, SeesEverySaveInTheSameClockTickAndUnderATimeInTheFuture) {
  WriteFile(path, one);
  fs::create_hard_link(path, top / "second name");
  for (const std::chrono::hours ahead : {std::chrono::hours(0), std::chrono::hours(1)}) {
    WriteFile(path, one);
    fs::last_write_time(path, fs::last_write_time(path) + ahead);
    Store writer(path, nullptr), reader(path, &policy);
    for (int number = 2; number < 20; ++number) {
      EXPECT_TRUE(writer.SetPref("A", number));
      EXPECT_EQ(reader.Read("A"), std::to_string(number)) << ahead.count() << " hours ahead";
    }
  }
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

TEST_F(PrefsStore, TakesItsLockOnceForABatchAndGivesItBackOnEveryWayOut) {
  WriteFile(path, one);
  Store store(path, &policy);
  const auto batch = [&] {
    const esd::PrefsLock lock(store);
    EXPECT_TRUE(store.SetPref("A", 2));
    EXPECT_EQ(store.Read("A"), "2");
    throw 0;
  };
  EXPECT_THROW(batch(), int);
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

TEST_F(PrefsStore, KeepsTheLockWhenTheFileCannotBeDeleted) {
  WriteFile(path, one);
  fs::permissions(top, fs::perms(0711));
  fs::permissions(folder, fs::perms(0555));
  test::ExpectInChild([&] {
    constexpr uid_t kNobody = 65534;  // root may delete everything
    EXPECT_TRUE(geteuid() != 0 || seteuid(kNobody) == 0);
    ForEachLock(one, [](Store& store, Policy& lock, bool has_lock, bool) {
      EXPECT_FALSE(store.DeleteAllPrefs());
      EXPECT_EQ(lock.IsLocked(), has_lock);
      EXPECT_EQ(store.Read("A"), "1");
    });
  });
  fs::permissions(folder, fs::perms(0755));
}

TEST_F(PrefsStore, SavesThroughALinkAndKeepsTheRights) {
  WriteFile(path, one);
  fs::permissions(path, fs::perms(0640));
  fs::create_symlink("folder/prefs.dat", top / "link");
  EXPECT_TRUE(Store(top / "link", nullptr).SetPref("A", 2));
  EXPECT_TRUE(fs::is_symlink(top / "link"));
  EXPECT_EQ(ReadFile(path), Document("<A>2</A>\n"));
  EXPECT_THAT(test::Rights(path), testing::StartsWith("mode 0640,"));
  EXPECT_TRUE(Store(folder / "new", nullptr).SetPref("A", 1));
  EXPECT_THAT(test::Rights(folder / "new"), testing::StartsWith("mode 0644,"));
  EXPECT_EQ(test::Text(test::Names(folder)), "new\nprefs.dat\n");
}

TEST_F(PrefsStore, KeepsTheFileAndItsOwnChangeOnAFullDisk) {
  WriteFile(path, one);
  test::ExpectInChild([&] {
    const rlimit full = {one.size(), one.size()};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &full);
    for (const fs::path& file : {path, folder / "new"}) {
      Store store(file, &policy);
      EXPECT_FALSE(store.SetPref("B", 200000)) << file;
      EXPECT_EQ(store.Read("B"), "200000") << file;
      EXPECT_FALSE(policy.IsLocked()) << file;
    }
  });
  EXPECT_EQ(ReadFile(path), one);
  EXPECT_EQ(test::Text(test::Names(folder)), "prefs.dat\n");
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
  Store store{path, &policy};
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

TEST_F(MapPrefs, ReadBooleansOrNothingAtAll) {
  const std::tuple<const char*, std::string, bool, std::map<std::string, bool>> rows[] = {
      {"no element", "", true, {}},
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
