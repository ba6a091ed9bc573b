#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/log_support.h"
#include "tests/system_stand_in.h"

namespace test {
namespace {

// The folders that all users of the machine log into, for a target that is given none.
class SuiteLogs : public TreeTest {
 protected:
  SuiteLogs() { fs::permissions(top, fs::perms{0755}); }
  ~SuiteLogs() override { System() = {}; }

  // Only root can give folders away.
  const uid_t ordinary_user = geteuid() == 0 ? kOrdinaryUser : geteuid();
  const gid_t group = geteuid() == 0 ? 65533 : getegid();
  const fs::path logs = home / "Library/Logs", outer = logs / "Lumora", inner = outer / "Lumdesk";
};

TEST_F(SuiteLogs, AreTheConsoleUsersAndOpenToAllOnlyWhereTheyAreMade) {
  umask(0027);
  const std::string shared = RightsText(0777, ordinary_user, group);
  const std::string own = RightsText(0750, geteuid(), getegid());
  const struct {
    const char* name;
    fs::path existing;
    bool has_seat;
    std::string expected;
  } rows[] = {{"nothing exists", home, true, shared},
              {"the outer folder exists", outer, true, shared},
              {"both exist", inner, true, own},
              {"nobody is at the console", home, false, own}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    fs::remove_all(home / "Library");
    fs::create_directories(row.existing);
    System() = {row.has_seat, ordinary_user, {{ordinary_user, {group, home}}}};
    EXPECT_TRUE(welko::LogTargetDefault("T").SetLogFile("", nullptr));
    EXPECT_EQ(Rights(outer), row.expected) << "which are the rights of " << outer;
    EXPECT_EQ(Rights(inner), row.expected) << "which are the rights of " << inner;
    EXPECT_EQ(Rights(inner / "Welko.log"), RightsText(0666, geteuid(), getegid()));
  }
}

// What a link leads to is a user's own, but for root others may have laid it.
TEST_F(SuiteLogs, BehindALinkAreMadeByItsUserAndNotByRoot) {
  const fs::path elsewhere = top / "elsewhere";
  for (const uid_t user : {geteuid(), ordinary_user}) {
    SCOPED_TRACE("user " + std::to_string(user));
    for (const fs::path& folder : {logs, elsewhere}) {
      fs::remove_all(folder);
      fs::create_directories(folder);
      EXPECT_EQ(chown(folder.c_str(), user, gid_t(-1)), 0);
    }
    fs::create_directory_symlink(elsewhere, outer);
    System() = {true, user, {{user, {getegid(), home}}}};
    ExpectInChild([&] {
      ASSERT_EQ(setuid(user), 0);
      EXPECT_EQ(welko::LogTargetDefault("T").SetLogFile("", nullptr), user != 0);
    });
    EXPECT_THAT(Rights(elsewhere), testing::StartsWith("mode 0755")) << "what the link leads to";
    EXPECT_THAT(Rights(elsewhere / "Lumdesk"),
                testing::StartsWith(user == 0 ? "nothing" : "mode 0777"));
  }
}

}  // namespace
}  // namespace test
