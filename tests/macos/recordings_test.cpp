// What the macOS side of the seam asks of the system, to the argument.

#include <gmock/gmock.h>

#include "platform/application.h"
#include "platform/console_user.h"
#include "platform/folders.h"
#include "platform/system_version.h"
#include "tests/macos/recording_system.h"
#include "tests/test_support.h"

namespace {

using platform::FolderDomain;
using testing::ElementsAre;

class Recordings : public test::TreeTest {
 protected:
  Recordings() { system = {}; }
  ~Recordings() override {
    EXPECT_EQ(system.unreleased, 0) << "Core Foundation objects are not given back";
  }

  test::RecordingSystem& system = test::System();
};

TEST_F(Recordings, LaunchServicesAreNotAskedForAnApplicationThatIsMissing) {
  const std::string path = top / "Some.app";
  EXPECT_FALSE(platform::LaunchApplication(path));
  EXPECT_THAT(system.calls, ElementsAre("FSPathMakeRef " + path + " 0"));
}

TEST_F(Recordings, LaunchServicesOpenANewInstanceAsynchronously) {
  const std::string path = top / "Some.app";
  test::WriteFile(path, "");
  for (const int status : {0, -10810}) {
    SCOPED_TRACE("LSOpenApplication answers " + std::to_string(status));
    system.calls.clear();
    system.open_status = status;
    EXPECT_EQ(platform::LaunchApplication(path), status == 0);
    EXPECT_THAT(system.calls,
                ElementsAre("FSPathMakeRef " + path + " 0",
                            "LSOpenApplication " + path +
                                " version=0 flags=0x90001 refcon=0 environment=0 argv=0 event=0"
                                " process=0"));
  }
}

TEST_F(Recordings, FileManagerIsAskedForTheFolder) {
  platform::FindFolder(FolderDomain::kUser, platform::kRootFolderType, false);
  platform::FindFolder(FolderDomain::kLocal, platform::kUtilitiesFolderType, true);
  EXPECT_THAT(system.calls, ElementsAre("FSFindFolder -32763 root 0", "FSRefMakePath 256",
                                        "FSFindFolder -32765 uti\xC4 1", "FSRefMakePath 256"));
}

TEST_F(Recordings, FileManagerIsAskedAgainForALongerPathUnlessItsSizeIsGiven) {
  setenv("WAKERLY_ROOT", (top / std::string(200, 'a') / std::string(200, 'b')).c_str(), 1);
  for (const std::size_t size : {platform::kAnySize, std::size_t{300}, std::size_t{1024}}) {
    platform::FindFolder(FolderDomain::kLocal, platform::kUtilitiesFolderType, true, size);
  }
  const std::string find = "FSFindFolder -32765 uti\xC4 1";
  EXPECT_THAT(system.calls,
              ElementsAre(find, "FSRefMakePath 256", "FSRefMakePath 512",  // of any size
                          find, "FSRefMakePath 300",                       // too short
                          find, "FSRefMakePath 1024"));
}

TEST_F(Recordings, PathsThatAreNotUtf8AreNone) {
  setenv("WAKERLY_ROOT", (top / "\xFF").c_str(), 1);
  EXPECT_FALSE(platform::FindFolder(FolderDomain::kLocal, platform::kUtilitiesFolderType, true));
}

TEST_F(Recordings, TheConsoleUserIsAskedOfTheSystemsOwnStore) {
  EXPECT_FALSE(platform::FindConsoleUser());
  EXPECT_THAT(system.calls, ElementsAre("SCDynamicStoreCopyConsoleUser 0"));
}

TEST_F(Recordings, TheConsoleUserIsTheOneThatTheStoreNames) {
  system.console_user = {501, 20};
  const auto user = platform::FindConsoleUser();
  ASSERT_TRUE(user);
  EXPECT_EQ(user->uid, 501U);
  EXPECT_EQ(user->gid, 20U);
}

// The numbers of the system's version, or none.
std::string Version() {
  const auto found = platform::FindSystemVersion();
  if (!found) return "none";
  return std::to_string(found->major_number) + "." + std::to_string(found->minor_number) + "." +
         std::to_string(found->patch_number);
}

TEST_F(Recordings, TheVersionIsGestaltsWhenItKnowsAllThreeNumbers) {
  system.gestalt = {{"sys1", 10}, {"sys2", 6}};
  EXPECT_EQ(Version(), "none");
  system.gestalt["sys3"] = 8;
  EXPECT_EQ(Version(), "10.6.8");
}

TEST_F(Recordings, TheVersionIsTheProcessInformationsWhenItAnswers) {
  system.gestalt = {{"sys1", 10}, {"sys2", 6}, {"sys3", 8}};
  test::ExpectInChild([] {  // a method that is added stays
    test::AddOperatingSystemVersion();
    EXPECT_EQ(Version(), "14.2.1");
  });
}

}  // namespace
