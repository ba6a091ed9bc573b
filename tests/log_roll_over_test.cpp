#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "tests/log_support.h"
#include "welko/log_backups.h"

namespace test {
namespace {

constexpr std::uintmax_t kMiB = 1048576;

class LogRollOver : public LogTest {
 protected:
  /// Gives the log a size; what is not text in it takes no room on the disk.
  void Grow(std::uintmax_t size) const {
    WriteFile(log, "old text\n");
    fs::resize_file(log, size);
  }
  /// Whether the target moves a log that is too large before it writes a line as of `seconds`. The
  /// backup is removed, for there can be but one a second.
  bool RollsOverBeforeALineOf(std::int64_t seconds) {
    Grow(10 * kMiB);
    Write(target, "new text", 30, seconds);
    EXPECT_TRUE(ReadFile(log).ends_with(" | new text\n")) << "the line is not written";
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (entry.path() != log) fs::remove(entry.path());
    }
    return fs::file_size(log) < 10 * kMiB;
  }
};

TEST_F(LogRollOver, HappensAtOpeningFromTheLimitOfTheLevel) {
  const struct {
    int level;
    std::uintmax_t limit;
  } rows[] = {{10, 50 * kMiB}, {20, 20 * kMiB}, {30, 10 * kMiB}, {0, 10 * kMiB}};
  for (const auto& [level, limit] : rows) {
    SCOPED_TRACE("level " + std::to_string(level));
    target.SetLogLevel(level);
    Grow(limit - 1);
    ASSERT_TRUE(OpenOn(target, log));
    EXPECT_EQ(Text(Names(folder)), "own.log\n") << "one byte below the limit";
    Grow(limit);
    ASSERT_TRUE(OpenOn(target, log));
    Write(target, "new text", 70);
    EXPECT_EQ(MessagesAfterHeader(log), "new text\n");
    ASSERT_EQ(Names(folder).size(), 2U) << "a backup beside the log";
    const fs::path backup = folder / Names(folder)[0];
    EXPECT_EQ(fs::file_size(backup), limit);
    EXPECT_EQ(ReadLines(backup)[0], "old text");
    fs::remove(backup);
  }
}

TEST_F(LogRollOver, KeepsOldBackupsWhereQuibTraceSaysKeeplogs) {
  const fs::path old_backup = welko::BackupPath(log, std::time(nullptr) - 2 * 86400);
  const struct {
    const char* quib_trace;
    bool keeps;
  } rows[] = {
      {"keeplogs", true}, {"keeplogs\n", false}, {"keeplog", false}, {"", false}, {"FIFO", false}};
  for (const auto& row : rows) {
    SCOPED_TRACE("quib.trace: " + std::string(row.quib_trace));
    fs::remove_all(folder);
    WriteFile(old_backup, "");
    WriteFile(folder / "quib.trace", row.quib_trace);
    if (row.quib_trace == std::string("FIFO")) {
      fs::remove(folder / "quib.trace");
      mkfifo((folder / "quib.trace").c_str(), 0600);
    }
    Grow(10 * kMiB);
    ExpectInChild([&] { EXPECT_TRUE(OpenOn(target, log)); });  // a FIFO could be waited for
    EXPECT_EQ(fs::file_size(log), 0U) << "rolled over";
    EXPECT_EQ(fs::exists(old_backup), row.keeps) << "whether the backup of two days ago is kept";
  }
}

// A check comes before a line, and goes by the time of the line before, as do the 15 minutes up to
// the next check.
TEST_F(LogRollOver, HappensEvery15Minutes) {
  const std::int64_t before = std::time(nullptr);
  ASSERT_TRUE(OpenOn(target, log));
  const std::int64_t opened = std::time(nullptr);  // or a moment earlier
  EXPECT_FALSE(RollsOverBeforeALineOf(before + 899)) << "the first line";
  EXPECT_FALSE(RollsOverBeforeALineOf(opened + 900)) << "last line 899 seconds after the opening";
  EXPECT_TRUE(RollsOverBeforeALineOf(opened + 1000)) << "last line 900 seconds after the opening";
  EXPECT_FALSE(RollsOverBeforeALineOf(opened + 1799)) << "last line 100 seconds after the check";
  EXPECT_FALSE(RollsOverBeforeALineOf(opened + 1800)) << "last line 899 seconds after the check";
  EXPECT_TRUE(RollsOverBeforeALineOf(opened + 1801)) << "last line 900 seconds after the check";
}

TEST_F(LogRollOver, WaitsWhileTheClockIsSetBack) {
  ASSERT_TRUE(OpenOn(target, log));
  const std::int64_t opened = std::time(nullptr);
  EXPECT_FALSE(RollsOverBeforeALineOf(opened - 86400)) << "the first line";
  EXPECT_FALSE(RollsOverBeforeALineOf(opened + 901)) << "last line a day before the opening";
  EXPECT_TRUE(RollsOverBeforeALineOf(opened + 902)) << "last line 901 seconds after the opening";
}

TEST_F(LogRollOver, MovesTheTextToTheLastByte) {
  umask(0027);
  std::string text;
  while (text.size() < 3 * 4096 + 100) text += "line at " + std::to_string(text.size()) + "\n";
  WriteFile(log, text);
  EXPECT_TRUE(welko::MoveLogText(log, folder / "backup"));
  EXPECT_EQ(ReadFile(folder / "backup"), text);
  EXPECT_EQ(ReadFile(log), "");
  EXPECT_THAT(Rights(folder / "backup"), testing::StartsWith("mode 0640,")) << "by the mask";
}

TEST_F(LogRollOver, LeavesTheLogWhereTheNameOfTheBackupIsTaken) {
  WriteFile(log, "text");
  WriteFile(folder / "taken", "backup");
  fs::create_symlink(top / "elsewhere", folder / "link");
  for (const char* name : {"taken", "link"}) {
    EXPECT_FALSE(welko::MoveLogText(log, folder / name)) << name;
  }
  EXPECT_EQ(ReadFile(log), "text");
  EXPECT_EQ(ReadFile(folder / "taken"), "backup");
  EXPECT_FALSE(fs::exists(top / "elsewhere")) << "written through a link";
}

TEST_F(LogRollOver, LeavesTheLogAndNoPartOfABackupOnAFullDisk) {
  Grow(10 * kMiB);
  ExpectInChild([this] {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = 4 * kMiB;
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_TRUE(OpenOn(target, log));
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_FSIZE, &limit);
    Write(target, "new text");
  });
  EXPECT_EQ(Text(Names(folder)), "own.log\n");
  EXPECT_EQ(ReadLines(log)[0], "old text");
  EXPECT_TRUE(ReadFile(log).ends_with(" | new text\n"));
}

TEST_F(LogRollOver, NamesABackupByTheLocalTime) {
  SetTimeZone("EST5");
  constexpr std::int64_t kMorning = 1367409607;  // 1 May 2013, 7:00:07 there
  EXPECT_EQ(welko::BackupPath("/x.d/a.b.log", kMorning), "/x.d/a.b 2013-05-01 07-00-07.log");
  EXPECT_EQ(welko::BackupPath("/x.d/log", kMorning), "/x.d/log 2013-05-01 07-00-07");
}

TEST_F(LogRollOver, KeepsTheNewestBackupsOfTheLastDays) {
  SetTimeZone("EST5");
  constexpr std::int64_t kMorning = 1367409600;  // 1 May 2013, 7:00 there
  const struct {
    const char *name, *log;
    Lines kept, removed;
  } rows[] = {
      {"the newest two, and what has another name",
       "Welko.log",
       {"Welko 2013-05-01 09-00-00.log", "Welko 2013-05-01 10-00-00.log", "Other.log",
        "My Welko.log", "sub/Welko 2013-04-20 10-00-00.log", "welko.log"},
       {"Welko 2013-05-01 08-00-00.log", "Welko 2013-04-20 10-00-00.log", "Welko.trace", "Welko",
        "Welkoff.log", "Welko old/x.log"}},
      {"today's and yesterday's",
       "Welko.log",
       {"Welko 2013-04-30 00-00-00.log", "Welko 2013-05-01 00-00-00.log"},
       {"Welko 2013-04-29 23-59-59.log", "Welko 2013-05-02 00-00-00.log"}},
      {"a log without an extension", "Welko", {"Welko 2013-05-01 09-00-00"}, {"Welko.log"}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    fs::remove_all(folder);
    WriteFile(folder / row.log, "");
    for (const std::string& name : row.kept) WriteFile(folder / name, "");
    for (const std::string& name : row.removed) WriteFile(folder / name, "");
    welko::RemoveOldBackups(folder / row.log, kMorning, 2);
    EXPECT_TRUE(fs::exists(folder / row.log)) << "the log itself";
    for (const auto& name : row.kept) EXPECT_TRUE(fs::exists(folder / name)) << name << " is gone";
    for (const auto& name : row.removed)
      EXPECT_FALSE(fs::exists(folder / name)) << name << " stays";
  }
}

}  // namespace
}  // namespace test
