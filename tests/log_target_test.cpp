#include <sys/stat.h>
#include <unistd.h>

#include "tests/log_support.h"
#include "welko/log_switches.h"

namespace {

using test::Lines;
using test::MessagesAfterHeader;
using test::OpenOn;
using test::Write;
using test::fs::path;

class LogTarget : public test::TreeTest {
 protected:
  LogTarget() { test::fs::create_directories(folder); }

  const path folder = top / "logs";
  const path log = folder / "own.log";
  const path user_logs = home / "Library/Logs";
  welko::LogTargetDefault target{"T"};
};

TEST(LogLine, CarriesLocalTimeLevelContextThreadAndMessage) {
  test::SetTimeZone("EST5");
  const auto line = [](int ms, int level, const welko::LogContext& context, const char* message) {
    return welko::FormatLogLine(1367421630000 + ms, level, context, "77", message, " | ");
  };
  EXPECT_EQ(line(7, 10, {"a", "b", "c", "d", "e", "f"}, "text"),
            "05/01/13 10:20:30:007 | [TRACE] | a | b | c | d | e | f | 77 | text");
  EXPECT_EQ(line(40, 0, {}, ""), "05/01/13 10:20:30:040 | [ALL] |  |  |  |  |  |  | 77 | ");
  EXPECT_EQ(line(999, 60, {"", nullptr, "c"}, "<User>me</User>"),
            "05/01/13 10:20:30:999 | [FATAL] |  |  | c |  |  |  | 77 | <User>****</User>");
  EXPECT_EQ(line(0, 20, {}, "<user>me</user> eyJa.eyJb"),
            "05/01/13 10:20:30:000 | [WARN] |  |  |  |  |  |  | 77 | "
            "Found access/device token. Log skipped.");
}

TEST_F(LogTarget, WritesWhatReachesItsLevelWithItsThreadId) {
  ASSERT_TRUE(OpenOn(target, log));
  for (const int level : {20, 29, 30, 31, 40, 50, 70}) Write(target, "text", level);
  Write(target, "eyJa.eyJb", 20);  // dropped, though its line would say WARN
  Lines expected;
  for (const std::string level : {"INFO", "ALL", "WARN", "ERROR", "NONE"}) {
    expected.push_back("TIME | [" + level + "] | a | b | c | d | e | f | TID | text");
  }
  EXPECT_EQ(test::LinesAfterHeader(log), expected);
  EXPECT_TRUE(test::ReadLines(log).at(6).ends_with(" | " + std::to_string(gettid()) + " | text"));
}

TEST_F(LogTarget, DropsLinesWhileClosedAndGoesOnInTheFileItIsGiven) {
  const std::pair<const char*, path> refused[] = {
      {"sub/b.log", folder}, {"b.log/", folder}, {"b.log", folder / "missing"}};
  for (const auto& [name, place] : refused) {
    EXPECT_FALSE(target.SetLogFile(name, place.c_str()) || target.Open()) << name;
    Write(target, "dropped");
  }
  ASSERT_TRUE(OpenOn(target, log));
  Write(target, "1");
  EXPECT_TRUE(target.SetLogFile("other.log", folder.c_str()));
  Write(target, "2");
  EXPECT_TRUE(target.Close());
  Write(target, "too late");
  EXPECT_TRUE(target.Open());
  Write(target, "3");
  EXPECT_EQ(MessagesAfterHeader(log), Lines{"1"});
  EXPECT_EQ(MessagesAfterHeader(folder / "other.log"), (Lines{"2", "3"}));
}

TEST_F(LogTarget, WritesTheUsersLogsWithoutAFileAndTheSuitesWithoutAFolder) {
  welko::LogTargetDefault suite("T");
  ASSERT_TRUE(suite.SetLogFile("", nullptr) && suite.Open() && target.Open());
  Write(suite, "suite");
  Write(target, "user");
  EXPECT_EQ(MessagesAfterHeader(user_logs / "Lumora/Lumdesk/Welko.log"), Lines{"suite"});
  EXPECT_EQ(MessagesAfterHeader(user_logs / "Welko.log"), Lines{"user"});
  EXPECT_EQ(test::fs::status(user_logs).permissions(), test::fs::perms{0700});
  test::fs::remove_all(home / "Library");
  test::WriteFile(home / "Library", "no folder");
  EXPECT_FALSE(suite.SetLogFile("own.log", "") || suite.Open());
}

TEST_F(LogTarget, TakesTheFirstSwitchFileThatIsAFile) {
  const struct {
    Lines present;  // a folder where the name ends in "/"
    int level, expected;
  } rows[] = {{{"own.trace", "own.debug"}, 40, 10},
              {{"own.debug", "quib.trace"}, 21, 20},
              {{"own.debug", "quib.trace"}, 19, 19},
              {{"quib.debug", "quib.trace"}, 40, 10},
              {{"own.trace/", "quib.debug"}, 40, 20},
              {{"quib.trace/", "own.log.trace", "Welko.trace"}, 40, 40}};
  for (const auto& row : rows) {
    test::fs::remove_all(user_logs);
    for (const std::string& name : row.present) {
      test::fs::create_directories((user_logs / name).parent_path());
      if (!name.ends_with('/')) test::WriteFile(user_logs / name, "");
    }
    EXPECT_EQ(welko::ApplyLogSwitches("own.log", row.level), row.expected) << row.present[0];
  }
  welko::LogTargetDefault traced("T");  // by Welko.trace, until its name is another
  ASSERT_TRUE(OpenOn(traced, log));
  Write(traced, "as constructed", 10);
  traced.SetLogLevel(30);
  Write(traced, "dropped", 29);
  EXPECT_EQ(MessagesAfterHeader(log), Lines{"as constructed"});
}

TEST_F(LogTarget, SharesANewFileAndBeginsItWithTheHeaderAndNoOther) {
  umask(0077);
  const path old = folder / "old.log";
  test::WriteFile(old, "old\n");
  welko::LogTargetDefault second("T"), third("T");
  ASSERT_TRUE(OpenOn(target, log) && OpenOn(second, log) && OpenOn(third, old));
  Write(target, "1", 50);
  Write(second, "2");
  Write(third, "3");
  EXPECT_EQ(MessagesAfterHeader(log), (Lines{"1", "2"}));
  EXPECT_EQ(test::ReadLog(log).at(1), "TIME | [INFO] | a | b | c | d | e | f | TID | Bit: 64");
  EXPECT_EQ(test::ReadLog(old), (Lines{"old", "TIME | [INFO] | a | b | c | d | e | f | TID | 3"}));
  EXPECT_EQ(test::fs::status(log).permissions(), test::fs::perms{0666});
  EXPECT_EQ(test::fs::status(old).permissions(), test::fs::perms{0600});
}

}  // namespace
