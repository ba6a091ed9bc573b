// Loading and saving while memory runs out, at every allocation in turn. A program of its own,
// since it replaces the allocation functions.

#include <cstdlib>
#include <new>

#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/resource_locker.h"
#include "tests/test_support.h"

namespace {

long g_allocations_left = -1;  // negative for no end

}  // namespace

void* operator new(std::size_t size) {
  if (g_allocations_left == 0) throw std::bad_alloc();
  if (g_allocations_left > 0) --g_allocations_left;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

namespace {

std::string Document(const std::string& value) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<Prefs>\n<Key>" + value +
         "</Key>\n<Other>some text that no string object has room for</Other>\n</Prefs>\n";
}

// Runs `body` with no more than `count` allocations. False when they did not suffice.
bool WithAllocations(long count, const std::function<void()>& body) {
  g_allocations_left = count;
  try {
    body();
  } catch (const std::bad_alloc&) {
    g_allocations_left = 0;
  }
  const bool sufficed = g_allocations_left > 0;
  g_allocations_left = -1;
  return sufficed;
}

using OutOfMemory = test::TreeTest;

// The lock is taken by the load, as it is where a malformed file is removed.
TEST_F(OutOfMemory, LeavesTheFileAsItWasOrAsItIsToBeAndNoLock) {
  const std::string path = top / "prefs.dat", before = Document("1"), after = Document("2");
  long count = 0;
  for (bool sufficed = false; !sufficed; ++count) {
    ASSERT_LT(count, 10'000) << "allocations, and still not enough";
    SCOPED_TRACE("with " + std::to_string(count) + " allocations");
    test::WriteFile(path, before);
    sufficed = WithAllocations(count, [&] {
      esd::ResourceLocker locker(path, 0);
      esd::PrefsWriter store("", "Prefs");
      store.SetLockPolicy(&locker);
      store.SetPrefsPath(path);
      store.SetPref("Key", 2);
    });
    const std::string text = test::ReadFile(path);
    EXPECT_TRUE(text == before || text == after) << "the file holds: " << text;
    EXPECT_FALSE(esd::ResourceLocker(path, 0).Unlock(true)) << "a lock was left behind";
  }
  EXPECT_EQ(test::ReadFile(path), after) << "with memory enough";
  EXPECT_GT(count, 20);
}

}  // namespace
