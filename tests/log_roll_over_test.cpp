#include <gmock/gmock.h>

#include "tests/log_support.h"
#include "welko/log_backups.h"
#include "welko/log_line.h"

namespace test {
namespace {

constexpr std::uintmax_t kMiB = 1048576;

class LogRollOver : public LogTest {
 protected:
  /// Whether the log is emptied when `act` meets it at `size`, which takes no room on the disk. The
  /// backup is removed, for there can be but one a second.
  bool RollsOver(std::uintmax_t size, const std::function<void()>& act) const {
    fs::resize_file(log, size);
    act();
    if (Names(folder).size() == 2) fs::remove(folder / Names(folder)[0]);
    return fs::file_size(log) < size;
  }
  bool RollsOverAtOpening(std::uintmax_t size) {
    return RollsOver(size, [this] { EXPECT_TRUE(OpenOn(target, log)); });
  }
  bool RollsOverBeforeALineOf(std::int64_t seconds) {
    return RollsOver(10 * kMiB, [&] { Write(target, "text", 30, seconds); });
  }
};

TEST_F(LogRollOver, HappensAtOpeningFromTheLimitOfTheLevel) {
  const std::pair<int, std::uintmax_t> limits[] = {{10, 50}, {20, 20}, {30, 10}, {0, 10}};
  for (const auto& [level, mib] : limits) {
    target.SetLogLevel(level);
    EXPECT_FALSE(RollsOverAtOpening(mib * kMiB - 1)) << "one byte below, at level " << level;
    EXPECT_TRUE(RollsOverAtOpening(mib * kMiB)) << mib << " MiB, at level " << level;
  }
}

TEST_F(LogRollOver, KeepsOldBackupsWhereQuibTraceSaysKeeplogs) {
  const fs::path old_backup = welko::BackupPath(log, std::time(nullptr) - 2 * 86400);
  for (const std::string text : {"keeplogs", "keeplogs\n", "keeplog"}) {
    WriteFile(folder / "quib.trace", text);
    WriteFile(old_backup, "");
    RollsOverAtOpening(10 * kMiB);
    EXPECT_EQ(fs::exists(old_backup), text == "keeplogs") << "kept with quib.trace: " << text;
  }
}

// A check comes before a line, and goes by the time of the line before, as do the 15 minutes up to
// the next check. A clock that is set back makes none.
TEST_F(LogRollOver, HappensEvery15Minutes) {
  const std::int64_t before = std::time(nullptr);
  ASSERT_TRUE(OpenOn(target, log));
  const std::int64_t opened = welko::NowMilliseconds() / 1000;  // std::time may be a tick behind
  EXPECT_FALSE(RollsOverBeforeALineOf(before + 899)) << "the first line";
  EXPECT_FALSE(RollsOverBeforeALineOf(opened + 900)) << "last line 899 seconds after the opening";
  EXPECT_TRUE(RollsOverBeforeALineOf(opened + 1850)) << "last line 900 seconds after the opening";
  EXPECT_TRUE(RollsOverBeforeALineOf(opened + 2749)) << "last line 950 seconds after the check";
  EXPECT_FALSE(RollsOverBeforeALineOf(opened - 86400)) << "last line 899 seconds after the check";
  EXPECT_FALSE(RollsOverBeforeALineOf(opened + 2800)) << "last line more than a day before it";
  EXPECT_TRUE(RollsOverBeforeALineOf(opened + 2801)) << "last line 950 seconds after it";
}

TEST_F(LogRollOver, MovesTheTextToTheLastByte) {
  umask(0027);
  const std::string text = Text(Lines(3000, "line"));
  WriteFile(log, text);
  EXPECT_TRUE(welko::MoveLogText(log, folder / "backup"));
  EXPECT_EQ(ReadFile(folder / "backup"), text);
  EXPECT_EQ(ReadFile(log), "");
  EXPECT_THAT(Rights(folder / "backup"), testing::StartsWith("mode 0640,")) << "by the mask";
}

TEST_F(LogRollOver, LeavesTheLogWhereTheNameOfTheBackupIsTaken) {
  WriteFile(log, "text");
  WriteFile(folder / "taken", "backup");
  EXPECT_FALSE(welko::MoveLogText(log, folder / "taken"));
  EXPECT_EQ(ReadFile(log), "text");
  EXPECT_EQ(ReadFile(folder / "taken"), "backup");
}

TEST_F(LogRollOver, NamesABackupByTheLocalTime) {
  SetTimeZone("EST5");
  constexpr std::int64_t kMorning = 1367409607;  // 1 May 2013, 7:00:07 there
  EXPECT_EQ(welko::BackupPath("/x.d/a.b.log", kMorning), "/x.d/a.b 2013-05-01 07-00-07.log");
  EXPECT_EQ(welko::BackupPath("/x.d/log", kMorning), "/x.d/log 2013-05-01 07-00-07");
}

TEST_F(LogRollOver, KeepsTheNewestBackupsOfTheLastDays) {
  SetTimeZone("EST5");
  constexpr std::int64_t kEvening = 1367463600;  // 1 May 2013, 22:00 there
  const Lines kept = {"own 2013-04-30 23-59-59.log", "own 2013-05-01 09-00-00.log", "my own.log",
                      "sub/own 2013-04-20 10-00-00.log", "own.log"};
  const Lines removed = {"own 2013-04-30 00-00-00.log", "own 2013-05-02 00-00-00.log",
                         "own 2013-04-29 23-59-59.log", "owner.log", "own old/x.log"};
  for (const std::string& name : kept) WriteFile(folder / name, "");
  for (const std::string& name : removed) WriteFile(folder / name, "");
  welko::RemoveOldBackups(log, kEvening, 2);
  for (const std::string& name : kept) EXPECT_TRUE(fs::exists(folder / name)) << name;
  for (const std::string& name : removed) EXPECT_FALSE(fs::exists(folder / name)) << name;
}

}  // namespace
}  // namespace test
