// Loading and saving while memory runs out, at every allocation in turn.
#include <new>
#include <utility>

#include "esd/prefs/resource_locker.h"
#include "esd/prefs/updater_prefs.h"
#include "tests/test_support.h"

extern long g_allocations_left;

namespace {

// Runs `body`, in which one allocation fails after `count` others; std::bad_alloc ends it there.
// False when one failed.
bool Suffice(long count, const std::function<void()>& body) {
  g_allocations_left = count;
  try {
    body();
  } catch (const std::bad_alloc&) {
    // What it was doing is what the caller looks at.
  }
  return std::exchange(g_allocations_left, -1) >= 0;
}

std::string Document(const std::string& value) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<Prefs>\n<Key>" + value +
         "</Key>\n<Other>some text that no string object has room for</Other>\n</Prefs>\n";
}

using OutOfMemory = test::TreeTest;

TEST_F(OutOfMemory, LeavesTheFileAsItWasOrAsItIsToBeAndNoLock) {
  const std::string path = top / "prefs.dat", before = Document("1"), after = Document("2");
  for (const bool has_lock : {true, false}) {
    bool sufficed = false;
    for (long count = 0; !sufficed; ++count) {
      ASSERT_LT(count, 10'000) << "allocations, and still not enough";
      SCOPED_TRACE(has_lock ? "with a lock" : "without a lock");
      SCOPED_TRACE("one fails after " + std::to_string(count) + " allocations");
      test::WriteFile(path, before);
      esd::ResourceLocker locker(path, 0);
      sufficed = Suffice(count, [&] {
        esd::PrefsWriter store("", "Prefs");
        if (has_lock)
          store.SetLockPolicy(&locker);  // before the load, which so may remove the file
        store.SetPrefsPath(path);
        store.SetPref("Key", 2);
        esd::ResourceLocker(path, 0).Lock();  // given back at its end
      });
      const std::string text = test::ReadFile(path);
      EXPECT_TRUE(text == after || (text == before && !sufficed)) << "the file holds: " << text;
      EXPECT_FALSE(esd::ResourceLocker(path, 0).Unlock(true)) << "a lock was left behind";
    }
  }
}

TEST_F(OutOfMemory, TheUpdatersPreferencesAreNotWiped) {
  const auto prefs =
      home / "Library/Application Support/Vantre/OrlanUpdater/1.0/VantreUpdaterPrefs.dat";
  const std::string text = "<Preferences><LogLevel>4</LogLevel></Preferences>";
  test::WriteFile(prefs, text);
  const auto load = [] { esd::VantreUpdaterPrefs::GetInstance(false); };
  int status = 1;
  for (long count = 0; status == 1; ++count) {
    status = test::InChild([&] { return Suffice(count, load) ? 0 : 1; });
    EXPECT_EQ(test::ReadFile(prefs), text) << "after " << count << " allocations one fails";
  }
  EXPECT_EQ(status, 0);
}

}  // namespace
