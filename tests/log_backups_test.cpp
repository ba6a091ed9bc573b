#include "welko/log_backups.h"

#include <sys/resource.h>

#include <csignal>

#include "tests/log_support.h"

namespace {

using test::Lines;
using test::MessagesAfterHeader;
using test::OpenOn;
using test::Write;
using test::fs::path;

constexpr std::uintmax_t kMiB = 1048576;
constexpr std::int64_t kNoon = 1367409600;  // 1 May 2013, 12:00 in UTC

class LogBackups : public test::TreeTest {
 protected:
  const path folder = top / "logs";
  const path log = folder / "Some.log";
  welko::LogTargetDefault target{"T"};
};

void MakeLog(const path& log, std::uintmax_t size) {
  test::WriteFile(log, "old text\n");
  test::fs::resize_file(log, size);
}

TEST_F(LogBackups, AreMadeAtOpenFromTheLimitOfTheLevelOn) {
  const std::pair<int, std::uintmax_t> rows[] = {
      {10, 50 * kMiB}, {20, 20 * kMiB}, {30, 10 * kMiB}, {0, 10 * kMiB}};
  for (const auto& [level, limit] : rows) {
    test::fs::remove_all(folder);
    target.SetLogLevel(level);
    MakeLog(log, limit - 1);
    ASSERT_TRUE(OpenOn(target, log));
    MakeLog(log, limit);
    EXPECT_EQ(test::Names(folder), Lines{"Some.log"}) << level;
    ASSERT_TRUE(OpenOn(target, log));
    Write(target, "new text");
    const path backup = folder / test::Names(folder)[0];
    ASSERT_EQ(test::fs::file_size(backup), limit) << level;
    EXPECT_EQ(test::ReadLines(backup)[0], "old text");
    EXPECT_EQ(MessagesAfterHeader(log), Lines{"new text"});
    target.Close();
  }
}

TEST_F(LogBackups, AreMadeWhenALineFollowsOne15MinutesAfterTheLastCheck) {
  test::SetTimeZone("UTC0");
  MakeLog(log, 0);
  const std::int64_t before = std::time(nullptr);
  ASSERT_TRUE(OpenOn(target, log));
  const std::int64_t after = std::time(nullptr);
  MakeLog(log, 10 * kMiB);
  Write(target, "1", 30, before + 899);
  Write(target, "2", 30, after + 900);
  EXPECT_EQ(test::Names(folder), Lines{"Some.log"});
  Write(target, "3", 30, after + 901);
  Write(target, "4", 30, after + 1799);
  EXPECT_EQ(test::Names(folder).size(), 2U);
  EXPECT_EQ(MessagesAfterHeader(log), (Lines{"3", "4"}));
  // The next 15 minutes count from line 2. No backup's name is in the way of one made too early.
  test::SetTimeZone("EST5");
  MakeLog(log, 10 * kMiB);
  Write(target, "5");
  EXPECT_GT(test::fs::file_size(log), 10 * kMiB);
}

TEST_F(LogBackups, AreNamedAfterTheLogAndTheLocalTime) {
  test::SetTimeZone("EST5");
  EXPECT_EQ(welko::BackupPath("/x.d/a.b.log", kNoon + 7), "/x.d/a.b 2013-05-01 07-00-07.log");
  EXPECT_EQ(welko::BackupPath("/x.d/log", kNoon), "/x.d/log 2013-05-01 07-00-00");
}

TEST_F(LogBackups, AreNotMadeOverWhatStandsThere) {
  test::WriteFile(log, "text");
  test::WriteFile(folder / "taken", "backup");
  test::fs::create_symlink(top / "elsewhere", folder / "link");
  for (const char* name : {"taken", "link"}) EXPECT_FALSE(welko::MoveLogText(log, folder / name));
  EXPECT_EQ(test::ReadFile(log) + test::ReadFile(folder / "taken"), "textbackup");
}

TEST_F(LogBackups, ThatCannotBeWrittenWholeLeaveTheLogAsItIs) {
  MakeLog(log, 10 * kMiB);
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit former{};
  getrlimit(RLIMIT_FSIZE, &former);
  const rlimit small = {4 * kMiB, former.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_TRUE(OpenOn(target, log));
  setrlimit(RLIMIT_FSIZE, &former);
  Write(target, "new text");
  EXPECT_EQ(test::Names(folder), Lines{"Some.log"});
  const Lines lines = test::ReadLines(log);
  ASSERT_EQ(lines.size(), 2U) << "a header";
  EXPECT_TRUE(lines[0] == "old text" && lines[1].ends_with(" | new text"));
}

TEST_F(LogBackups, OfEarlierDaysGoAtARollOverUnlessTheLogsAreKept) {
  const path old_backup = welko::BackupPath(log, std::time(nullptr) - 2 * 86400);
  for (const std::string quib_trace : {"keeplogs", "keeplogs\n", "keeplog"}) {
    test::fs::remove_all(folder);
    MakeLog(log, 10 * kMiB);
    test::WriteFile(old_backup, "");
    test::WriteFile(folder / "quib.trace", quib_trace);
    ASSERT_TRUE(OpenOn(target, log));
    EXPECT_EQ(test::Names(folder).size(), quib_trace == "keeplogs" ? 4U : 3U) << quib_trace;
    EXPECT_EQ(test::fs::exists(old_backup), quib_trace == "keeplogs") << quib_trace;
    target.Close();
  }
}

TEST_F(LogBackups, AreCleanedUpToTheNewestOfTheLastDays) {
  test::SetTimeZone("UTC0");
  // By log: names that stay, among them its own, and names that go.
  const std::pair<Lines, Lines> rows[] = {
      {{"Welko.log", "Welko 2013-05-01 09-00-00.log", "Welko 2013-05-01 10-00-00.log", "Other.log",
        "My Welko.log", "sub/Welko 2013-04-20 10-00-00.log", "welko.log"},
       {"Welko 2013-05-01 08-00-00.log", "Welko 2013-04-20 10-00-00.log", "Welko.trace", "Welko",
        "Welkoff.log", "Welko old/x.log"}},
      {{"Welko.log", "Welko 2013-04-30 00-00-00.log", "Welko 2013-05-01 00-00-00.log"},
       {"Welko 2013-04-29 23-59-59.log", "Welko 2013-05-02 00-00-00.log"}},
      {{"Welko", "Welko 2013-05-01 09-00-00", "Welko 2013-05-01 10-00-00"},
       {"Welko 2013-05-01 08-00-00", "Welko.log"}}};
  for (const auto& [kept, removed] : rows) {
    test::fs::remove_all(folder);
    for (const std::string& name : kept) test::WriteFile(folder / name, "");
    for (const std::string& name : removed) test::WriteFile(folder / name, "");
    welko::RemoveOldBackups(folder / kept[0], kNoon, 2);
    for (const auto& name : kept) EXPECT_TRUE(test::fs::exists(folder / name)) << name;
    for (const auto& name : removed) EXPECT_FALSE(test::fs::exists(folder / name)) << name;
  }
}

}  // namespace
