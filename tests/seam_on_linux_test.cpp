// What every side of the seam does where it runs on Linux, whose numbers and environment a test can
// look at or set.

#include <cstdlib>
#include <thread>

#include "platform/languages.h"
#include "platform/thread_id.h"
#include "tests/test_support.h"

namespace test {
namespace {

using SeamOnLinux = TreeTest;

// GNUstep knows the languages that the program was started with, and adds its own.
TEST_F(SeamOnLinux, KnowsTheLanguagesInTheirOrderAndTheLocale) {
  setenv("LANGUAGE", "ar:sv", 1);
  setenv("LC_ALL", "ar_MA.UTF-8", 1);
  Lines languages = platform::PreferredLanguages();
  languages.resize(2);
  EXPECT_EQ(Text(languages), "ar\nsv\n");
  EXPECT_EQ(platform::CurrentLocaleIdentifier(), "ar_MA");
}

TEST_F(SeamOnLinux, NumbersThreadsAsTheSystemDoes) {
  const auto task = [] { return "/proc/self/task/" + std::to_string(platform::CurrentThreadId()); };
  std::string other;
  std::thread([&] {
    other = task();
    EXPECT_TRUE(fs::exists(other)) << other;
  }).join();
  EXPECT_NE(task(), other);
}

}  // namespace
}  // namespace test
