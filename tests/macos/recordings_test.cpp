// What the macOS side of the seam asks of the system, to the argument.

#include <gmock/gmock.h>

#include "platform/application.h"
#include "platform/console_user.h"
#include "platform/folders.h"
#include "platform/system_version.h"
#include "tests/macos/recording_system.h"
#include "tests/test_support.h"

namespace {

using testing::ElementsAre;

class Recordings : public test::TreeTest {
 protected:
  ~Recordings() override { EXPECT_EQ(system.unreleased, 0); }

  test::RecordingSystem& system = test::System();
};

TEST_F(Recordings, LaunchServicesOpenANewInstanceAsynchronouslyAndNothingElse) {
  const std::string path = top / "Some.app";
  EXPECT_FALSE(platform::LaunchApplication(path));
  EXPECT_THAT(system.calls, ElementsAre("FSPathMakeRef " + path + " 0"));
  test::WriteFile(path, "");
  system.calls.clear();
  for (const int status : {0, -10810}) {
    system.open_status = status;
    EXPECT_EQ(platform::LaunchApplication(path), status == 0);
  }
  const std::string open = "LSOpenApplication " + path +
                           " version=0 flags=0x90001 refcon=0 environment=0 argv=0 event=0"
                           " process=0";
  const std::string make = "FSPathMakeRef " + path + " 0";
  EXPECT_THAT(system.calls, ElementsAre(make, open, make, open));
}

TEST_F(Recordings, FileManagerIsAskedForTheFolderAndAgainForALongerPath) {
  using platform::FolderDomain;
  platform::FindFolder(FolderDomain::kUser, platform::kRootFolderType, false);
  setenv("WAKERLY_ROOT", (top / std::string(200, 'a') / std::string(200, 'b')).c_str(), 1);
  for (const std::size_t size : {platform::kAnySize, std::size_t{300}, std::size_t{1024}}) {
    platform::FindFolder(FolderDomain::kLocal, platform::kUtilitiesFolderType, true, size);
  }
  const std::string find = "FSFindFolder -32765 uti\xC4 1";
  EXPECT_THAT(system.calls, ElementsAre("FSFindFolder -32763 root 0", "FSRefMakePath 256", find,
                                        "FSRefMakePath 256", "FSRefMakePath 512", find,
                                        "FSRefMakePath 300", find, "FSRefMakePath 1024"));
}

TEST_F(Recordings, PathsThatAreNotUtf8AreNone) {
  setenv("WAKERLY_ROOT", (top / "\xFF").c_str(), 1);
  EXPECT_FALSE(
      platform::FindFolder(platform::FolderDomain::kLocal, platform::kUtilitiesFolderType, true));
}

TEST_F(Recordings, TheConsoleUserIsAskedOfTheSystemsOwnStore) {
  EXPECT_FALSE(platform::FindConsoleUser());
  system.console_user = {501, 20};
  const auto user = platform::FindConsoleUser();
  ASSERT_TRUE(user);
  EXPECT_EQ(std::pair(user->uid, user->gid), std::pair(501U, 20U));
  EXPECT_THAT(system.calls,
              ElementsAre("SCDynamicStoreCopyConsoleUser 0", "SCDynamicStoreCopyConsoleUser 0"));
}

TEST_F(Recordings, TheVersionIsTheProcessInformationsElseGestaltsWhenItKnowsAllThree) {
  const auto version = [] {
    const auto found = platform::FindSystemVersion();
    return found ? std::vector{found->major_number, found->minor_number, found->patch_number}
                 : std::vector<long>{};
  };
  system.gestalt = {{"sys1", 10}, {"sys2", 6}};
  EXPECT_THAT(version(), ElementsAre());
  system.gestalt["sys3"] = 8;
  EXPECT_THAT(version(), ElementsAre(10, 6, 8));
  test::AddOperatingSystemVersion();
  EXPECT_THAT(version(), ElementsAre(14, 2, 1));
}

}  // namespace
