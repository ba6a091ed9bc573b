#include "tests/failing_allocations.h"

#include <cstdlib>
#include <new>

namespace {

long g_left = 0;
bool g_counts = false;
bool g_one_has_failed = false;
test::Failing g_failing = test::Failing::kOne;

bool MustFail() {
  if (!g_counts || g_left-- > 0) return false;
  g_one_has_failed = true;
  g_counts = g_failing == test::Failing::kOneAndAllThatFollow;
  return true;
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = MustFail() ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

namespace test {

bool WithAllocations(long count, Failing failing, const std::function<void()>& body) {
  g_left = count;
  g_failing = failing;
  g_one_has_failed = false;
  g_counts = true;
  try {
    body();
  } catch (const std::bad_alloc&) {
    // What it was doing is what the caller looks at.
  }
  g_counts = false;
  return !g_one_has_failed;
}

}  // namespace test
