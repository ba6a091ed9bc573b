// The user who sits at the machine's screen, what is looked up and made as that user, and home
// folders.

#include "platform/console_user.h"

#include <unistd.h>

#include "platform/folders.h"
#include "tests/system_stand_in.h"
#include "tests/test_support.h"
#include "welko/folder_path.h"
#include "welko/library_logs.h"

namespace test {
namespace {

const std::string kNotFound = "not found";

std::string ById(unsigned id) {
  std::string path = "before";
  return welko::GetFolderPath(id, path) ? path : kNotFound;
}

std::string LogsFolder() { return welko::GetConsoleUserLogsFolder().value_or(kNotFound); }

// Somebody sits at the screen whose home nobody else may enter.
class ConsoleUserTest : public TreeTest {
 protected:
  ConsoleUserTest() {
    fs::create_directories(user_home);
    fs::permissions(top, fs::perms(0755));
    fs::permissions(user_home, fs::perms(0700));
    EXPECT_EQ(chown(user_home.c_str(), user, gid_t(-1)), 0);
    System() = {.has_seat = true, .active_user = user, .users = {{user, {4711, user_home}}}};
  }
  ~ConsoleUserTest() override { System() = {}; }

  // Rights of a folder that `owner` has made for itself.
  static std::string PrivateOf(uid_t owner) { return RightsText(0700, owner, getegid()); }

  // Only root can act as another. Who is not root sits at the screen itself.
  const uid_t own = geteuid();
  const uid_t user = own == 0 ? kOrdinaryUser : own;
  const fs::path user_home = own == 0 ? top / "user" : home;
};

TEST_F(ConsoleUserTest, IsTheActiveUserOfTheFirstSeatIfItHasAnEntry) {
  const auto found = platform::FindConsoleUser();
  ASSERT_TRUE(found);
  EXPECT_EQ(found->uid, user);
  EXPECT_EQ(found->gid, 4711U);
  System().users = {{0, {0, "/root"}}};
  EXPECT_FALSE(platform::FindConsoleUser()) << "a user without an entry";
  System().active_user = {};
  EXPECT_FALSE(platform::FindConsoleUser()) << "nobody sits there";
  System() = {.has_seat = false, .active_user = 0, .users = {{0, {0, "/root"}}}};
  EXPECT_FALSE(platform::FindConsoleUser()) << "no seat";
}

TEST_F(ConsoleUserTest, HasItsFoldersFoundAndMadeAsItself) {
  umask(077);
  const std::pair<unsigned, const char*> rows[] = {
      {10, "Documents"}, {12, "Library/Application Support"}, {32, "Library/Logs"}};
  for (const auto& [id, folder] : rows) {
    SCOPED_TRACE("folder id " + std::to_string(id));
    fs::remove_all(user_home / "Library");
    EXPECT_EQ(ById(id), user_home / folder);
    EXPECT_EQ(Rights(user_home / folder), PrivateOf(user));
    EXPECT_EQ(geteuid(), own) << "the effective user is not given back";
  }
  EXPECT_EQ(ById(9), home) << "the home folder remains that of the process";
}

TEST_F(ConsoleUserTest, IsNoLongerActedAsWhenALookUpThrows) {
  unsetenv("HOME");
  for (const unsigned id : {10U, 32U}) {
    System().look_ups_left = 1;  // for the console user's group
    EXPECT_THROW(ById(id), std::runtime_error);
    EXPECT_EQ(geteuid(), own) << "after a look-up of the folder id " << id;
  }
}

TEST_F(ConsoleUserTest, HasALogsFolderThatBelongsToWhoeverMadeIt) {
  EXPECT_EQ(LogsFolder(), user_home / "Library/Logs");
  EXPECT_EQ(Rights(user_home / "Library/Logs"), PrivateOf(own));
}

// By number the folders are then the process's own.
TEST_F(ConsoleUserTest, HasNoLogsFolderWhereTheProcessMayNotActAsIt) {
  setenv("HOME", user_home.c_str(), 1);
  System() = {.has_seat = true, .active_user = 0, .users = {{0, {0, home}}}};
  ExpectInChild([this] {
    BecomeOrdinaryUser();
    EXPECT_EQ(LogsFolder(), kNotFound);
    EXPECT_EQ(ById(10), user_home / "Documents");
    EXPECT_EQ(ById(32), user_home / "Library/Logs");
  });
}

using HomeFolderTest = ConsoleUserTest;

TEST_F(HomeFolderTest, IsTheEntrysWhileActingAsAnotherAndWithoutTheEnvironment) {
  ASSERT_EQ(seteuid(user), 0);
  EXPECT_EQ(platform::HomeFolder(), user_home);
  ASSERT_EQ(seteuid(own), 0);
  System().users[own] = {0, "/own entry"};
  unsetenv("HOME");
  EXPECT_EQ(platform::HomeFolder(), "/own entry");
}

TEST_F(HomeFolderTest, IsEmptyAndHoldsNothingForAUserWithoutAnEntry) {
  unsetenv("HOME");
  System() = {};
  EXPECT_EQ(ById(9), "");
  EXPECT_EQ(ById(10), "before");
  EXPECT_EQ(ById(32), kNotFound);
  EXPECT_EQ(LogsFolder(), kNotFound);
}

}  // namespace
}  // namespace test
