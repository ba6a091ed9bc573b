// What the macOS side of the seam asks of the system, to the argument.

#include <gmock/gmock.h>

#include "platform/application.h"
#include "platform/console_user.h"
#include "platform/folders.h"
#include "platform/system_version.h"
#include "tests/macos/recording_system.h"
#include "tests/test_support.h"

namespace test {
namespace {

using platform::FolderDomain;
using platform::kUtilitiesFolderType;
using testing::ElementsAre;

struct Recordings : TreeTest {
  Recordings() { system = {}; }
  RecordingSystem& system = System();
};

TEST_F(Recordings, LaunchServicesOpenANewInstanceAsynchronouslyUnlessItIsMissing) {
  const std::string path = top / "Some.app", look = "FSPathMakeRef " + path + " ";
  const std::string open = "LSOpenApplication " + path +
                           " version=0 flags=90001 refcon=0 environment=0 argv=0 event=0 process=0";
  EXPECT_FALSE(platform::LaunchApplication(path));
  WriteFile(path, "");
  EXPECT_TRUE(platform::LaunchApplication(path));
  system.open_status = -10810;
  EXPECT_FALSE(platform::LaunchApplication(path));
  EXPECT_THAT(system.calls, ElementsAre(look, look, open, look, open));
}

TEST_F(Recordings, FileManagerIsAskedForTheFolderAndAgainForALongerPathUnlessItsSizeIsGiven) {
  const std::string find = "FSFindFolder -32765 uti\xC4 1", letters(200, 'a');
  EXPECT_FALSE(platform::FindFolder(FolderDomain::kUser, platform::kFontsFolderType, false));
  const fs::path deep = top / letters / letters / letters / letters / letters;
  setenv("WAKERLY_ROOT", deep.c_str(), 1);
  EXPECT_EQ(platform::FindFolder(FolderDomain::kLocal, kUtilitiesFolderType, true),
            deep / "Applications/Utilities");
  EXPECT_FALSE(platform::FindFolder(FolderDomain::kLocal, kUtilitiesFolderType, true, 300));
  EXPECT_THAT(system.calls, ElementsAre("FSFindFolder -32763 font 0", find, "FSRefMakePath 256",
                                        "FSRefMakePath 512", "FSRefMakePath 1024",
                                        "FSRefMakePath 2048",  // of any size
                                        find, "FSRefMakePath 300"));
}

TEST_F(Recordings, PathsThatAreNotUtf8AreNone) {
  setenv("WAKERLY_ROOT", (top / "\xFF").c_str(), 1);
  EXPECT_FALSE(platform::FindFolder(FolderDomain::kLocal, kUtilitiesFolderType, true));
}

TEST_F(Recordings, TheConsoleUserIsTheOneThatTheSystemsOwnStoreNames) {
  EXPECT_FALSE(platform::FindConsoleUser());
  EXPECT_THAT(system.calls, ElementsAre("SCDynamicStoreCopyConsoleUser 0"));
  system.console_user = {501, 20};
  const auto user = platform::FindConsoleUser();
  ASSERT_TRUE(user);
  EXPECT_EQ(user->uid, 501U);
  EXPECT_EQ(user->gid, 20U);
}

TEST_F(Recordings, TheVersionIsTheProcessInformationsOrAllThreeNumbersOfGestalt) {
  const auto version = [] {
    const auto found = platform::FindSystemVersion().value_or(platform::SystemVersion{});
    return std::vector{found.major_number, found.minor_number, found.patch_number};
  };
  system.gestalt = {{"sys1", 10}, {"sys2", 6}};
  EXPECT_FALSE(platform::FindSystemVersion());
  system.gestalt["sys3"] = 8;
  EXPECT_THAT(version(), ElementsAre(10, 6, 8));
  ExpectInChild([&] {  // a method that is added stays
    AddOperatingSystemVersion();
    EXPECT_THAT(version(), ElementsAre(14, 2, 1));
  });
}

}  // namespace
}  // namespace test
