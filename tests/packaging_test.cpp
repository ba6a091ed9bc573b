#include "platform/md5.h"
#include "tests/test_support.h"

namespace test {
namespace {

// The system tells every user of a launch agent that has changed: no byte does by chance.
TEST(Packaging, LaunchAgentsStayAsTheyAre) {
  const struct {
    const char* name;
    const char* digest;
  } rows[] = {
      {"com.vantre.VantreOrlanUpdater-1.0.plist", "71602e014ab5b08baad29b6d626adad6"},
      {"com.vantre.Wakerly-1.0.plist", "8f415c4121b70c721a17798f6723b877"},
  };
  for (const auto& row : rows) {
    std::string digest;
    for (const unsigned byte :
         platform::Md5Digest(ReadFile(fs::path(PACKAGING "/macos") / row.name))) {
      digest += "0123456789abcdef"[byte / 16];
      digest += "0123456789abcdef"[byte % 16];
    }
    EXPECT_EQ(digest, row.digest) << row.name << " has changed, or its MD5 digest is wrong";
  }
}

}  // namespace
}  // namespace test
