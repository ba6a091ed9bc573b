#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

#include "esd/prefs/map_pref.h"
#include "esd/prefs/prefs_lock.h"
#include "tests/test_support.h"

namespace {

using test::ReadFile, test::WriteFile, test::fs::last_write_time;

struct Policy : esd::LockPolicyInterface {
  bool Lock() override { return !refuses && ++locks > 0; }
  bool Unlock(bool) override { return ++unlocks > 0; }
  bool IsLocked() override { return locks > unlocks; }
  int locks = 0, unlocks = 0;
  bool refuses = false;
};

struct Store : esd::PrefsWriter {
  Store(const std::string& path, Policy* policy) : PrefsWriter("", "Prefs") {
    SetLockPolicy(policy);
    SetPrefsPath(path);
  }
  /// "!" for a failed read, which must leave its target alone.
  std::string Read(const std::string& key) {
    int number = 77;
    return GetPref(key, number, -1) ? std::to_string(number) : number == 77 ? "!" : "changed";
  }
  bool Replace(const std::string& key) {
    return SetPref(key, std::make_unique<esd::XMLDocumentNode>("New"));
  }
};

std::string Document(const std::string& entries) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<Prefs>\n" + entries + "</Prefs>\n";
}

struct PrefsStore : test::TreeTest {
  void WriteElsewhere(const std::string& text) {
    const auto before = last_write_time(path);
    const auto write = [&] {
      WriteFile(path, text);
      return 0;
    };
    do test::InChild(write);
    while (last_write_time(path) <= before);
  }
  const std::string path = top / "prefs.dat", one = Document("<A>1</A>\n");
  Policy policy;
};

TEST_F(PrefsStore, ReadsDefaultsForWhatIsMissingOrEmptyAndFailsOnWhatDoesNotConvert) {
  WriteFile(path, Document("<One>1</One><One>2</One><Empty/><Yes>yes</Yes><Words> a b </Words>"));
  Store store(path, nullptr);
  std::string reads, text;
  for (const char* key : {"One", "one", "Empty", "Yes", "Words"}) {
    EXPECT_TRUE(store.GetPref<std::string>(key, text, "none")) << key;
    reads += store.Read(key) + " " + text + ";";
  }
  EXPECT_EQ(reads, "1 1;-1 none;-1 none;! yes;!  a b ;");
}

TEST_F(PrefsStore, AppendsNewEntriesChangesOldOnesInPlaceAndKeepsWhatItDoesNotKnow) {
  const std::string foreign = "<F x=\"1\">\n<A>7</A>\n</F>\n", second = "<A>9</A>\n";
  WriteFile(path, Document(foreign + "<A>0</A>\n" + second));
  Store store(path, nullptr);
  EXPECT_TRUE(store.SetPref("B", false));
  EXPECT_TRUE(store.SetPref("C", ~0UL));
  EXPECT_TRUE(store.SetPref("A", -1));
  EXPECT_TRUE(store.Replace("B"));
  EXPECT_TRUE(store.SetPref("D", true));
  EXPECT_TRUE(store.SetPref<std::string>("E", " a & b "));
  EXPECT_EQ(ReadFile(path), Document(foreign + "<A>-1</A>\n" + second +
                                     "<C>18446744073709551615</C>\n<New></New>\n"
                                     "<D>1</D>\n<E> a &amp; b </E>\n"));
}

TEST_F(PrefsStore, ReplacesAMalformedFileOnlyWhenTheLoadTookTheLockAndSeesAnotherProcess) {
  for (const std::string& bad : {Document("<A>1</B>"), one + "<", std::string(3000, 0)}) {
    WriteFile(path, bad);
    Store unlocked(path, nullptr);
    EXPECT_FALSE(unlocked.SetPref("A", 1));
    EXPECT_FALSE(unlocked.Replace("A"));
    EXPECT_EQ(unlocked.Read("A"), "-1");
    EXPECT_EQ(ReadFile(path), bad);
    Store store(path, &policy);
    EXPECT_FALSE(test::fs::exists(path));
    EXPECT_TRUE(store.SetPref("A", 1));
    EXPECT_EQ(ReadFile(path), one);
    WriteElsewhere(bad);
    EXPECT_FALSE(store.SetPref("A", 1));
    EXPECT_EQ(ReadFile(path), bad);
    WriteElsewhere(Document("<A>2</A>"));
    EXPECT_EQ(store.Read("A"), "2");
    EXPECT_EQ(test::InChild([&] { return unlink(path.c_str()); }), 0);
    EXPECT_EQ(store.Read("A"), "-1");
  }
}

TEST_F(PrefsStore, SeesEverySaveInTheSameClockTickAndUnderATimeInTheFuture) {
  for (const std::uint64_t ahead : {0ULL, 3'600'000'000'000ULL}) {
    WriteFile(path, one);
    last_write_time(path, last_write_time(path) + std::chrono::nanoseconds(ahead));
    Store writer(path, nullptr), reader(path, &policy);
    for (int number = 2; number < 20; ++number) {
      EXPECT_TRUE(writer.SetPref("A", number));
      EXPECT_EQ(reader.Read("A"), std::to_string(number)) << ahead;
    }
  }
}

TEST_F(PrefsStore, DoesNothingWithoutItsLockTakesItOnceForABatchAndGivesItBackOnEveryWayOut) {
  WriteFile(path, one);
  Store store(path, &policy);
  policy.refuses = true;
  EXPECT_EQ(store.Read("A"), "!");
  EXPECT_FALSE(store.SetPref("A", 2));
  EXPECT_FALSE(store.Replace("A"));
  EXPECT_FALSE(store.DeleteAllPrefs());
  store.EmptyDOM();
  store.SetPrefsPath(top / "other");
  policy.refuses = false;
  EXPECT_TRUE(store.Save());
  EXPECT_EQ(ReadFile(path), one);
  const auto batch = [&] {
    const esd::PrefsLock lock(store);
    EXPECT_TRUE(store.SetPref("B", 1));
    EXPECT_TRUE(store.DeleteAllPrefs());
    throw 0;
  };
  EXPECT_THROW(batch(), int);
  EXPECT_THROW(store.SetPrefsPath(""), std::runtime_error);
  EXPECT_EQ(policy.locks, 4);  // load, save, batch, path
  EXPECT_EQ(policy.unlocks, 4);
}

TEST_F(PrefsStore, KeepsTheFileAndItsOwnChangeOnAFullDisk) {
  WriteFile(path, one);
  const auto on_full_disk = [&] {
    const rlimit full = {one.size(), one.size()};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &full);
    for (const std::string& file : {path, path + ".new"}) {
      Store store(file, &policy);
      EXPECT_FALSE(store.SetPref("B", 200000));
      EXPECT_EQ(store.Read("B"), "200000");
      EXPECT_FALSE(policy.IsLocked());
    }
    return HasFailure() ? 1 : 0;
  };
  EXPECT_EQ(test::InChild(on_full_disk), 0);
  EXPECT_EQ(ReadFile(path), one);
  EXPECT_FALSE(test::fs::exists(path + ".new"));
}

TEST_F(PrefsStore, KeepsMapsAsElementsWithTheirBlanks) {
  const std::map<std::string, std::string> blanks = {{"a b", "  c\td "}, {"e", ""}};
  auto texts = blanks;
  Store store(path, nullptr);
  esd::MapPref<std::string, std::string> pref("T");
  pref.SetStore(&store);
  EXPECT_TRUE(pref.Set({}));
  EXPECT_TRUE(pref.Get(texts));
  EXPECT_TRUE(texts.empty());
  EXPECT_TRUE(pref.Set(blanks));
  const std::string entry = "<MapPrefEntry MapPrefKey=\"", end = "</MapPrefEntry>\n";
  EXPECT_EQ(ReadFile(path),
            Document("<T>\n" + entry + "a b\">  c\td " + end + entry + "e\">" + end + "</T>\n"));
  store.SetPrefsPath(path);
  EXPECT_TRUE(pref.Get(texts));
  EXPECT_EQ(texts, blanks);
}

}  // namespace
