#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/log_support.h"
#include "welko/log_level.h"
#include "welko/log_switches.h"

namespace test {
namespace {

using LogTarget = LogTest;
using testing::EndsWith;
using testing::StartsWith;

TEST_F(LogTarget, WritesWhatReachesItsLevel) {
  ASSERT_TRUE(OpenOn(target, log));
  Write(target, "eyJa.eyJb", 20);  // dropped, though its line would say WARN
  for (const int level : {29, 30, 31, 40, 50, 60, 70}) {
    Write(target, "level " + std::to_string(level), level);
  }
  EXPECT_EQ(Text(LinesAfterHeader(log)),
            "TIME | [INFO] | a | b | c | d | e | f | TID | level 30\n"
            "TIME | [ALL] | a | b | c | d | e | f | TID | level 31\n"
            "TIME | [WARN] | a | b | c | d | e | f | TID | level 40\n"
            "TIME | [ERROR] | a | b | c | d | e | f | TID | level 50\n"
            "TIME | [FATAL] | a | b | c | d | e | f | TID | level 60\n"
            "TIME | [NONE] | a | b | c | d | e | f | TID | level 70\n");
}

TEST_F(LogTarget, WritesOneHeaderIntoAnEmptyFileThatItShares) {
  welko::LogTargetDefault second("T");
  ASSERT_TRUE(OpenOn(target, log));
  ASSERT_TRUE(OpenOn(second, log));
  Write(second, "1", 40);
  Write(target, "2");
  EXPECT_EQ(MessagesAfterHeader(log), "1\n2\n");
  EXPECT_EQ(ReadLog(log)[1], "TIME | [INFO] | a | b | c | d | e | f | TID | Bit: 64");
  WriteFile(log, "an old line\n");
  Write(target, "3");
  EXPECT_EQ(Text(Messages(ReadLog(log))), "an old line\n3\n");
}

TEST_F(LogTarget, OpensANewFileToEverybody) {
  umask(0077);
  fs::permissions(log, fs::perms{0640});
  ASSERT_TRUE(OpenOn(target, log));
  ASSERT_TRUE(OpenOn(target, folder / "new.log"));
  EXPECT_THAT(Rights(log), StartsWith("mode 0640,")) << "an existing file keeps its mode";
  EXPECT_THAT(Rights(folder / "new.log"), StartsWith("mode 0666,"));
}

TEST_F(LogTarget, DropsLinesWhileClosedAndGoesOnInTheFileItIsGiven) {
  Write(target, "too early");
  ASSERT_TRUE(OpenOn(target, log));
  Write(target, "1");
  EXPECT_TRUE(target.SetLogFile("other.log", folder.c_str()));
  Write(target, "2");
  EXPECT_TRUE(target.Close());
  Write(target, "too late");
  EXPECT_TRUE(target.Open());
  Write(target, "3");
  EXPECT_EQ(MessagesAfterHeader(log), "1\n");
  EXPECT_EQ(MessagesAfterHeader(folder / "other.log"), "2\n3\n");
}

TEST_F(LogTarget, WritesNothingAfterItsFileWasRefused) {
  fs::create_directories(folder / "folder.log");
  const struct {
    const char* name;
    fs::path folder;
  } refused[] = {
      {"../own.log", folder}, {"folder.log", folder}, {"own.log", folder / "missing folder"}};
  for (const auto& [name, refused_folder] : refused) {
    SCOPED_TRACE("refused: " + std::string(name) + " in " + refused_folder.string());
    fs::resize_file(log, 0);
    ASSERT_TRUE(OpenOn(target, log));
    Write(target, "before");
    EXPECT_FALSE(target.SetLogFile(name, refused_folder.c_str()));
    Write(target, "while disabled");
    EXPECT_FALSE(target.Open());
    ASSERT_TRUE(OpenOn(target, log));
    Write(target, "after");
    EXPECT_EQ(MessagesAfterHeader(log), "before\nafter\n");
  }
}

TEST_F(LogTarget, PrintsTheTimeThatItIsGivenAndElseTheCurrentOne) {
  SetTimeZone("UTC0");
  ASSERT_TRUE(OpenOn(target, log));
  Write(target, "given", 30, 1367421630);
  EXPECT_THAT(ReadLines(log).back(), StartsWith("05/01/13 15:20:30:000 | "));
  const std::int64_t before = std::time(nullptr);
  Write(target, "now", 30, 0);
  Lines stamps;
  for (std::int64_t second = before; second <= std::time(nullptr); ++second) {
    stamps.push_back(welko::FormatLocalTime("%m/%d/%y %H:%M:%S", second));
  }
  EXPECT_THAT(stamps, testing::Contains(ReadLines(log).back().substr(0, 17)))
      << "the seconds that passed while the line was written";
}

TEST_F(LogTarget, CutsAMessageWithArgumentsTo4095Bytes) {
  const auto logged = [this](const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    target.Log(30, {}, format, &arguments, 0, true);
    va_end(arguments);
    return Messages({ReadLines(log).back()})[0];
  };
  ASSERT_TRUE(OpenOn(target, log));
  EXPECT_EQ(logged("%d of %s", 7, "many"), "7 of many");
  EXPECT_EQ(logged("%4095s", "x").size(), 4095U);
  EXPECT_EQ(logged("%4096s", "x").size(), 4095U);
  Write(target, std::string(4095, 'x') + "%d");
  EXPECT_EQ(Messages({ReadLines(log).back()})[0].size(), 4097U) << "without arguments";
}

TEST_F(LogTarget, WritesThreadIdsWhereTheSystemHasThem) {
  const std::string id = std::to_string(gettid());
  const struct {
    const char* version;
    std::string thread_id;
  } rows[] = {{"none", id}, {"10.5.8", ""}, {"10.6", id}, {"11.3", id}};
  for (const auto& row : rows) {
    WritePropertyList(root / "System/Library/CoreServices/SystemVersion.plist", "ProductVersion",
                      row.version);
    welko::LogTargetDefault own("T");
    ASSERT_TRUE(OpenOn(own, log));
    Write(own, "text");
    EXPECT_THAT(ReadLines(log).back(), EndsWith(" | f | " + row.thread_id + " | text"))
        << "system version " << row.version;
  }
}

TEST_F(LogTarget, MergesAReplacementIntoItsHeader) {
  ASSERT_TRUE(OpenOn(target, log));
  const welko::HeaderBlock replacement = {"top", {{"New: ", "1"}, {"OS Locale: ", "xx"}}, "bottom"};
  const std::string merged =
      "top\nBit: 64\nOS Locale: xx\nOS Name: Mac OS 0.0.0\nOS Version: 0.0.0\nNew: 1\nbottom\n";
  target.WriteHeader(welko::kLogWarn, {}, &replacement);
  EXPECT_EQ(Text(Messages(ReadLog(log))), merged);
  EXPECT_THAT(ReadLog(log)[0], StartsWith("TIME | [WARN] | "));
  fs::resize_file(log, 0);
  Write(target, "text");
  EXPECT_EQ(Text(Messages(ReadLog(log))), merged + "text\n")
      << "in the header that it writes itself";
}

TEST_F(LogTarget, TakesItsLevelFromTheFirstSwitchFile) {
  const struct {
    Lines files;
    int level, expected;
  } rows[] = {{{"own.trace", "own.debug"}, 40, 10},
              {{"own.debug", "quib.trace"}, 21, 20},
              {{"own.debug", "quib.trace"}, 19, 19},
              {{"quib.trace", "quib.debug"}, 40, 10},
              {{"quib.debug"}, 40, 20},
              {{"quib.debug"}, 19, 19},
              {{"own.log.trace", "Welko.trace"}, 40, 40}};
  for (const auto& row : rows) {
    fs::remove_all(user_logs);
    for (const std::string& name : row.files) WriteFile(user_logs / name, "");
    EXPECT_EQ(welko::ApplyLogSwitches("own.log", row.level), row.expected)
        << "the level " << row.level << " with the files\n"
        << Text(row.files);
  }
}

TEST_F(LogTarget, TakesAFolderOrAFifoForNoSwitchFile) {
  for (const char* name : {"own.trace", "own.debug", "quib.trace", "quib.debug"}) {
    fs::create_directory(user_logs / name);
    EXPECT_EQ(welko::ApplyLogSwitches("own.log", 40), 40) << "with a folder " << name;
    fs::remove(user_logs / name);
    mkfifo((user_logs / name).c_str(), 0600);
    ExpectInChild([&] {  // opening a FIFO would wait for ever
      EXPECT_EQ(welko::ApplyLogSwitches("own.log", 40), 40) << "with a FIFO " << name;
    });
    fs::remove(user_logs / name);
  }
}

TEST_F(LogTarget, BeginsWithTheNameWelko) {
  WriteFile(user_logs / "Welko.trace", "");
  welko::LogTargetDefault traced("T");
  EXPECT_TRUE(traced.Open());
  Write(traced, "user's", 10);
  EXPECT_EQ(MessagesAfterHeader(user_logs / "Welko.log"), "user's\n");
  EXPECT_TRUE(traced.SetLogFile("", nullptr));
  Write(traced, "suite's", 10);
  EXPECT_EQ(MessagesAfterHeader(user_logs / "Lumora/Lumdesk/Welko.log"), "suite's\n");
}

}  // namespace
}  // namespace test
