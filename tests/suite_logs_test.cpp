#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/console_user.h"
#include "platform/folders.h"
#include "tests/log_support.h"

namespace platform {

// Answer for the system in these tests.
std::optional<ConsoleUser> g_console;
std::optional<ConsoleUser> FindConsoleUser() { return g_console; }
std::string HomeFolder() { return getenv("HOME"); }
std::optional<std::string> FindFolder(FolderDomain, FolderType, bool, std::size_t) {
  return HomeFolder();
}

}  // namespace platform

namespace test {
namespace {

using SuiteLogs = TreeTest;

std::string RightsOf(const std::string& mode, uid_t owner, gid_t group) {
  return "mode " + mode + ", owner " + std::to_string(owner) + ", group " + std::to_string(group);
}

// The folders that all users of the machine log into, for a target that is given none.
TEST_F(SuiteLogs, AreTheConsoleUsersAndOpenToAllOnlyWhereTheyAreMade) {
  fs::permissions(top, fs::perms{0755});
  umask(0027);
  // Only root can give folders away.
  const platform::ConsoleUser user = geteuid() == 0 ? platform::ConsoleUser{65534, 65533}
                                                    : platform::ConsoleUser{geteuid(), getegid()};
  const std::string shared = RightsOf("0777", user.uid, user.gid);
  const std::string own = RightsOf("0750", geteuid(), getegid());
  const fs::path outer = home / "Library/Logs/Lumora", inner = outer / "Lumdesk";
  const struct {
    const char* name;
    fs::path existing;
    std::optional<platform::ConsoleUser> console;
    std::string expected;
  } rows[] = {{"nothing exists", home, user, shared},
              {"the outer folder exists", outer, user, shared},
              {"both exist", inner, user, own},
              {"nobody is at the console", home, std::nullopt, own}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    fs::remove_all(home / "Library");
    fs::create_directories(row.existing);
    platform::g_console = row.console;
    EXPECT_TRUE(welko::LogTargetDefault("T").SetLogFile("", nullptr));
    EXPECT_EQ(Rights(outer), row.expected) << "which are the rights of " << outer;
    EXPECT_EQ(Rights(inner), row.expected) << "which are the rights of " << inner;
  }
}

// What a link leads to is a user's own, but for root others may have laid it.
TEST_F(SuiteLogs, BehindALinkAreMadeByItsUserAndNotByRoot) {
  fs::permissions(top, fs::perms{0755});
  const fs::path logs = home / "Library/Logs", elsewhere = top / "elsewhere";
  for (const uid_t user : {geteuid(), geteuid() == 0 ? 65534 : geteuid()}) {
    SCOPED_TRACE("user " + std::to_string(user));
    for (const fs::path& folder : {logs, elsewhere}) {
      fs::remove_all(folder);
      fs::create_directories(folder);
      EXPECT_EQ(chown(folder.c_str(), user, gid_t(-1)), 0);
    }
    fs::create_directory_symlink(elsewhere, logs / "Lumora");
    ExpectInChild([&] {
      ASSERT_EQ(setuid(user), 0);
      platform::g_console = platform::ConsoleUser{user, getegid()};
      EXPECT_EQ(welko::LogTargetDefault("T").SetLogFile("", nullptr), user != 0);
    });
    EXPECT_THAT(Rights(elsewhere), testing::StartsWith("mode 0755")) << "what the link leads to";
    EXPECT_THAT(Rights(elsewhere / "Lumdesk"),
                testing::StartsWith(user == 0 ? "nothing" : "mode 0777"));
  }
}

}  // namespace
}  // namespace test
