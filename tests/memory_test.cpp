// Loading and saving while memory runs out, at every allocation in turn.

#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/resource_locker.h"
#include "esd/prefs/updater_prefs.h"
#include "tests/failing_allocations.h"
#include "tests/test_support.h"

namespace {

using test::Failing;

std::string Document(const std::string& value) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<Prefs>\n<Key>" + value +
         "</Key>\n<Other>some text that no string object has room for</Other>\n</Prefs>\n";
}

// The lock is taken by the load, as it is where a malformed file is removed.
void LoadAndSave(const std::string& path) {
  esd::ResourceLocker locker(path, 0);
  esd::PrefsWriter store("", "Prefs");
  store.SetLockPolicy(&locker);
  store.SetPrefsPath(path);
  store.SetPref("Key", 2);
}

using OutOfMemory = test::TreeTest;

TEST_F(OutOfMemory, LeavesTheFileAsItWasOrAsItIsToBeAndNoLock) {
  const std::string path = top / "prefs.dat", before = Document("1"), after = Document("2");
  for (const Failing failing : {Failing::kOne, Failing::kOneAndAllThatFollow}) {
    long count = 0;
    for (bool sufficed = false; !sufficed; ++count) {
      ASSERT_LT(count, 10'000) << "allocations, and still not enough";
      SCOPED_TRACE((failing == Failing::kOne ? "one fails after " : "all fail after ") +
                   std::to_string(count) + " allocations");
      test::WriteFile(path, before);
      sufficed = test::WithAllocations(count, failing, [&] { LoadAndSave(path); });
      const std::string text = test::ReadFile(path);
      EXPECT_TRUE(text == before || text == after) << "the file holds: " << text;
      EXPECT_FALSE(esd::ResourceLocker(path, 0).Unlock(true)) << "a lock was left behind";
    }
    EXPECT_EQ(test::ReadFile(path), after) << "with memory enough";
    EXPECT_GT(count, 20);
  }
}

TEST_F(OutOfMemory, TheUpdatersPreferencesAreNotWiped) {
  const auto path =
      home / "Library/Application Support/Vantre/OrlanUpdater/1.0" / "VantreUpdaterPrefs.dat";
  const std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<Preferences>\n<LogLevel>4</LogLevel>\n"
      "</Preferences>\n";
  test::WriteFile(path, text);
  const auto load = [] { esd::VantreUpdaterPrefs::GetInstance(false); };
  int status = 1;
  for (long count = 0; status == 1; ++count) {
    status =
        test::InChild([&] { return test::WithAllocations(count, Failing::kOne, load) ? 0 : 1; });
    EXPECT_EQ(test::ReadFile(path), text) << "after " << count << " allocations one fails";
  }
  EXPECT_EQ(status, 0);
}

}  // namespace
