#include "platform/console_user.h"

#include <sys/stat.h>
#include <unistd.h>

#include "platform/folders.h"
#include "tests/test_support.h"
#include "welko/folder_path.h"
#include "welko/library_logs.h"

namespace platform {

// What the system answers in these tests, and who asked it.
struct {
  std::optional<ConsoleUser> console;
  bool throws;
  std::vector<uid_t> asked_as;
} g_system;

std::optional<ConsoleUser> FindConsoleUser() { return g_system.console; }
std::string HomeFolder() {
  g_system.asked_as.push_back(geteuid());
  if (g_system.throws) throw 1;
  return getenv("HOME");
}
std::optional<std::string> FindFolder(FolderDomain, FolderType, bool, std::size_t) {
  return HomeFolder();
}

}  // namespace platform

namespace {

using platform::g_system;
constexpr unsigned kLogs = ~0U;  // stands for the logs folder among the ids

std::string Path(unsigned id) {
  std::string out;
  if (id == kLogs) return welko::GetConsoleUserLogsFolder().value_or("none");
  return welko::GetFolderPath(id, out) ? out : "none";
}

struct ConsoleUserTest : test::TreeTest {
  ConsoleUserTest() {
    EXPECT_EQ(chmod(top.c_str(), 0755) + chmod(home.c_str(), 0700), 0);
    EXPECT_EQ(chown(home.c_str(), other, gid_t(-1)), 0);
  }
  ~ConsoleUserTest() override { EXPECT_EQ(seteuid(own), 0); }
  const uid_t own = geteuid(), other = own == 0 ? 65534 : own;  // only root can act as another
  const test::fs::path logs = home / "Library/Logs";
};

TEST_F(ConsoleUserTest, LooksUpTheUsersPrivateFoldersElseItsOwnAndGivesTheUserBackInAnyCase) {
  const std::tuple<unsigned, test::fs::path, uid_t> cases[] = {
      {10, home, other}, {32, logs, other}, {kLogs, logs, own}};
  for (const auto& [id, path, owner] : cases) {
    test::fs::remove_all(home / "Library");
    g_system = {platform::ConsoleUser{other, other}, false, {}};
    EXPECT_EQ(Path(id), path);
    struct stat status {};
    stat(path.c_str(), &status);
    EXPECT_EQ(std::pair(status.st_uid, status.st_mode), std::pair(owner, S_IFDIR | 0700U)) << id;
    g_system.throws = true;
    EXPECT_ANY_THROW(Path(id));
    EXPECT_EQ(geteuid(), own) << id;
    g_system.console.reset();
    EXPECT_ANY_THROW(Path(id));
    EXPECT_EQ(g_system.asked_as, (std::vector{other, other, own})) << id;
  }
}

TEST_F(ConsoleUserTest, RefusedSwitchFailsTheLogsFolderButNoLookUp) {
  g_system = {platform::ConsoleUser{0, 0}, false, {}};
  const auto differs = [&](unsigned id, const std::string& path) {
    return test::InChild([&] { return setuid(other) != 0 || Path(id) != path ? 1 : 0; });
  };
  EXPECT_EQ(differs(kLogs, "none"), 0);
  EXPECT_EQ(differs(10, home), 0);
}

}  // namespace
