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
    System() = {.has_seat = true, .active_user = user, .users = {{user, {group, user_home}}}};
  }
  ~ConsoleUserTest() override { System() = {}; }

  // Rights of a folder that `owner` has made for itself.
  static std::string PrivateOf(uid_t owner) { return RightsText(0700, owner, getegid()); }

  // Only root can act as another. Who is not root sits at the screen itself.
  const uid_t own = geteuid();
  const uid_t user = own == 0 ? 65534 : own;
  const gid_t group = 4711;
  const fs::path user_home = own == 0 ? top / "user" : home;
};

TEST_F(ConsoleUserTest, IsTheActiveUserOfTheFirstSeat) {
  const struct {
    const char* name;
    bool has_seat;
    std::optional<uid_t> active_user;
    std::string found;
  } rows[] = {
      {"somebody sits there", true, 815, "user 815, group 4711"},
      {"no seat", false, 815, "nobody"},
      {"nobody sits there", true, {}, "nobody"},
      {"a user without an entry", true, 816, "nobody"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    System() = {.has_seat = row.has_seat,
                .active_user = row.active_user,
                .users = {{815, {group, "/home"}}, {0, {0, "/root"}}}};
    const std::optional<platform::ConsoleUser> found = platform::FindConsoleUser();
    EXPECT_EQ(found ? "user " + std::to_string(found->uid) + ", group " + std::to_string(found->gid)
                    : "nobody",
              row.found);
  }
}

TEST_F(ConsoleUserTest, HasItsFoldersFoundAndMadeAsItself) {
  const std::string support = "Library/Application Support";
  const struct {
    unsigned id;
    std::string made, product;
  } rows[] = {
      {10, "Documents", ""},
      {12, support, ""},
      {19, support, "/Vantre"},
      {22, support, "/Vantre/Welko"},
      {26, support, "/Vantre/Welko/Tarnik"},
      {32, "Library/Logs", ""},
  };
  umask(077);
  for (const auto& row : rows) {
    SCOPED_TRACE("folder id " + std::to_string(row.id));
    fs::remove_all(user_home / "Library");
    EXPECT_EQ(ById(row.id), user_home / (row.made + row.product));
    EXPECT_EQ(Rights(user_home / row.made), PrivateOf(user));
    EXPECT_EQ(geteuid(), own) << "the effective user is not given back";
  }
}

TEST_F(ConsoleUserTest, HasALogsFolderThatBelongsToWhoeverMadeIt) {
  EXPECT_EQ(LogsFolder(), user_home / "Library/Logs");
  EXPECT_EQ(Rights(user_home / "Library"), PrivateOf(own));
  EXPECT_EQ(Rights(user_home / "Library/Logs"), PrivateOf(own));
}

TEST_F(ConsoleUserTest, LeavesTheHomeFolderThatOfTheProcess) { EXPECT_EQ(ById(9), home); }

TEST_F(ConsoleUserTest, IsNoLongerActedAsWhenALookUpThrows) {
  unsetenv("HOME");
  const std::map<std::string, std::function<std::string()>> rows = {
      {"documents", [] { return ById(10); }},
      {"logs by number", [] { return ById(32); }},
      {"logs", LogsFolder}};
  for (const auto& [name, look_up] : rows) {
    SCOPED_TRACE(name);
    System().looked_up_as.clear();
    System().throwing_look_up = 2;  // the first is for the console user's group
    EXPECT_THROW(look_up(), std::runtime_error);
    EXPECT_EQ(System().looked_up_as, (std::vector{own, user}));
    EXPECT_EQ(geteuid(), own) << "the effective user is not given back";
  }
}

TEST_F(ConsoleUserTest, HasNoLogsFolderWhereTheProcessMayNotActAsIt) {
  setenv("HOME", user_home.c_str(), 1);
  System() = {.has_seat = true, .active_user = 0, .users = {{0, {0, home}}}};
  ExpectInChild([this] {
    ASSERT_EQ(setuid(user), 0);
    EXPECT_EQ(LogsFolder(), kNotFound);
    // By number the folders are then the process's own.
    EXPECT_EQ(ById(10), user_home / "Documents");
    EXPECT_EQ(ById(32), user_home / "Library/Logs");
  });
}

using HomeFolderTest = ConsoleUserTest;

TEST_F(HomeFolderTest, IsNotTheEnvironmentsWhileActingAsAnother) {
  ASSERT_EQ(seteuid(user), 0);
  EXPECT_EQ(platform::HomeFolder(), user_home);
}

TEST_F(HomeFolderTest, IsTheEntrysWithoutTheEnvironment) {
  System().users[own] = {0, "/own entry"};
  setenv("HOME", "", 1);
  EXPECT_EQ(platform::HomeFolder(), "/own entry");
  unsetenv("HOME");
  EXPECT_EQ(platform::HomeFolder(), "/own entry");
}

TEST_F(HomeFolderTest, IsEmptyAndHoldsNothingForAUserWithoutAnEntry) {
  unsetenv("HOME");
  System() = {};
  EXPECT_EQ(ById(9), "");
  EXPECT_EQ(ById(10), "before");
  EXPECT_EQ(ById(19), "before/Vantre");
  EXPECT_EQ(ById(32), kNotFound);
  EXPECT_EQ(LogsFolder(), kNotFound);
}

}  // namespace
}  // namespace test
