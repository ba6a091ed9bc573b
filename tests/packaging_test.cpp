#include "platform/md5.h"
#include "tests/test_support.h"

namespace test {
namespace {

// The system tells every user of a launch agent that has changed: no byte does by chance.
TEST(Packaging, LaunchAgentsStayAsTheyAre) {
  constexpr const char* kAgents[][2] = {
      {"com.vantre.VantreOrlanUpdater-1.0.plist", "71602e014ab5b08baad29b6d626adad6"},
      {"com.vantre.Wakerly-1.0.plist", "8f415c4121b70c721a17798f6723b877"}};
  for (const auto& [name, digest] : kAgents) {
    std::string found;
    const std::string text = ReadFile(fs::path(PACKAGING "/macos") / name);
    for (const unsigned byte : platform::Md5Digest(text)) {
      found += "0123456789abcdef"[byte / 16];
      found += "0123456789abcdef"[byte % 16];
    }
    EXPECT_EQ(found, digest) << name << " has changed, or its MD5 digest is wrong";
  }
}

}  // namespace
}  // namespace test
