#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/log_support.h"
#include "welko/log_level.h"
#include "welko/log_switches.h"

namespace test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class LogTarget : public LogTest {
 protected:
  std::string LastMessage() const { return Messages({ReadLines(log).back()})[0]; }
};

TEST_F(LogTarget, WritesWhatReachesItsLevel) {
  ASSERT_TRUE(OpenOn(target, log));
  Write(target, "eyJa.eyJb", 20);  // dropped, though its line would say WARN
  for (const int level : {40, 29, 30, 31, 50, 60, 70}) {
    Write(target, "level " + std::to_string(level), level);
  }
  Write(target, "eyJa.eyJb");
  EXPECT_EQ(ReadLog(log)[1], "TIME | [INFO] | a | b | c | d | e | f | TID | Bit: 64");
  EXPECT_EQ(Text(LinesAfterHeader(ReadLog(log))),
            "TIME | [WARN] | a | b | c | d | e | f | TID | level 40\n"
            "TIME | [INFO] | a | b | c | d | e | f | TID | level 30\n"
            "TIME | [ALL] | a | b | c | d | e | f | TID | level 31\n"
            "TIME | [ERROR] | a | b | c | d | e | f | TID | level 50\n"
            "TIME | [FATAL] | a | b | c | d | e | f | TID | level 60\n"
            "TIME | [NONE] | a | b | c | d | e | f | TID | level 70\n"
            "TIME | [WARN] | a | b | c | d | e | f | TID | "
            "Found access/device token. Log skipped.\n");
}

TEST_F(LogTarget, LeavesAnExistingFileItsMode) {
  fs::permissions(log, fs::perms{0640});
  ASSERT_TRUE(OpenOn(target, log));
  EXPECT_THAT(Rights(log), StartsWith("mode 0640,"));
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
  const std::pair<const char*, fs::path> refused[] = {
      {"../own.log", folder}, {"folder.log", folder}, {"own.log", folder / "missing"}};
  ASSERT_TRUE(OpenOn(target, log));
  for (const auto& [name, refused_folder] : refused) {
    SCOPED_TRACE("refused: " + std::string(name) + " in " + refused_folder.string());
    EXPECT_FALSE(target.SetLogFile(name, refused_folder.c_str()));
    Write(target, "while disabled");
    EXPECT_FALSE(target.Open());
  }
  ASSERT_TRUE(OpenOn(target, log));
  Write(target, "after");
  EXPECT_EQ(MessagesAfterHeader(log), "after\n");
}

TEST_F(LogTarget, PrintsTheTimeThatItIsGivenAndElseTheCurrentOne) {
  SetTimeZone("EST5");
  ASSERT_TRUE(OpenOn(target, log));
  target.Log(60, {"a", nullptr, "c"}, "given", nullptr, 1367421630007, true);
  EXPECT_THAT(ReadLines(log).back(), StartsWith("05/01/13 10:20:30:007 | [FATAL] | a |  | c |  |"));
  Write(target, "now");
  std::tm printed{};
  strptime(ReadLines(log).back().c_str(), "%m/%d/%y %H:%M:%S", &printed);
  EXPECT_LE(std::time(nullptr) - std::mktime(&printed), kDeadline.count()) << "seconds ago";
}

TEST_F(LogTarget, CutsAMessageWithArgumentsTo4095Bytes) {
  const auto logged = [this](const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    target.Log(30, {}, format, &arguments, 0, true);
    va_end(arguments);
    return LastMessage();
  };
  ASSERT_TRUE(OpenOn(target, log));
  EXPECT_EQ(logged("%d of %s", 7, "many"), "7 of many");
  EXPECT_EQ(logged("%4096s", "x").size(), 4095U);
  Write(target, std::string(4095, 'x') + "%d");
  EXPECT_EQ(LastMessage().size(), 4097U) << "without arguments";
}

TEST_F(LogTarget, WritesThreadIdsWhereTheSystemHasThem) {
  const std::string id = std::to_string(gettid());
  const struct {
    std::string version, in_header, thread_id;
  } rows[] = {{"10.5.8", "10.5.8", ""}, {"10.6", "10.6.0", id}, {"11.3", "11.3.0", id}};
  for (const auto& row : rows) {
    SCOPED_TRACE("system version " + row.version);
    WriteFile(root / "System/Library/CoreServices/SystemVersion.plist",
              "<plist><dict><key>ProductVersion</key><string>" + row.version + "</string>");
    fs::resize_file(log, 0);
    welko::LogTargetDefault own("T");
    ASSERT_TRUE(OpenOn(own, log));
    Write(own, "text");
    EXPECT_THAT(ReadFile(log), HasSubstr(" | OS Name: Mac OS " + row.in_header + "\n"));
    EXPECT_THAT(ReadFile(log), EndsWith(" | f | " + row.thread_id + " | text\n"));
  }
}

TEST_F(LogTarget, MergesAReplacementIntoTheHeaderOfAnInstalledSuite) {
  WriteFile(root / "Applications/Utilities/Vantre Lumora/Lumdesk/Lumora.app/Contents/Info.plist",
            "<plist><dict><key>CFBundleShortVersionString</key><string>5.1 &lt;b&gt;</string>");
  welko::LogTargetDefault own("T");
  ASSERT_TRUE(OpenOn(own, log));
  const welko::HeaderBlock replacement = {"top", {{"New: ", "1"}, {"OS Locale: ", "xx"}}, "bottom"};
  const std::string merged =
      "top\nLumdesk Version: 5.1 <b>\nBit: 64\nOS Locale: xx\nOS Name: Mac OS 0.0.0\n"
      "OS Version: 0.0.0\nNew: 1\nbottom\n";
  own.WriteHeader(welko::kLogWarn, {}, &replacement);
  EXPECT_EQ(Text(Messages(ReadLog(log))), merged);
  EXPECT_THAT(ReadFile(log), HasSubstr(" | [WARN] | "));
  fs::resize_file(log, 0);
  Write(own, "text");
  EXPECT_EQ(Text(Messages(ReadLog(log))), merged + "text\n") << "in the header of an empty file";
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
              {{"own.log.trace", "Welko.trace"}, 40, 40}};
  for (const auto& row : rows) {
    fs::remove_all(user_logs);
    for (const std::string& name : row.files) WriteFile(user_logs / name, "");
    EXPECT_EQ(welko::ApplyLogSwitches("own.log", row.level), row.expected)
        << "the level " << row.level << " with the files\n"
        << Text(row.files);
  }
}

TEST_F(LogTarget, TakesAFifoForNoSwitchFile) {
  fs::create_directories(user_logs);
  for (const char* name : {"own.trace", "own.debug", "quib.trace", "quib.debug"}) {
    mkfifo((user_logs / name).c_str(), 0600);
  }
  ExpectInChild([this] {  // opening a FIFO would wait for ever
    EXPECT_EQ(welko::ApplyLogSwitches("own.log", 40), 40);
    EXPECT_FALSE(welko::KeepsOldLogs(user_logs));
  });
}

TEST_F(LogTarget, HidesCredentialsAndTokens) {
  // All keys in one message: each mask changes the length of what stands before the next one's
  // turn.
  std::string all, masked;
  for (const std::string key : {"ProxyUserName", "Proxy-User", "ProxyUser", "User", "UserName",
                                "Proxy-Password", "ProxyPassword", "PASSWORD"}) {
    all += "<" + key + ">" + key.substr(3) + "</" + key + ">";
    masked += "<" + key + ">****</" + key + ">";
  }
  const struct {
    std::string name, message, written;
  } rows[] = {{"all keys", all, masked},
              {"token over two lines", "eyJ\nand .eyJ", "Found access/device token. Log skipped."},
              {"second part of a token first", ".eyJ b eyJ", ".eyJ b eyJ"},
              {"two elements", "<user>a</User><user>b</user>", "<user>****</User><user>b</user>"},
              {"empty element", "<password></password>", "<password></password>"},
              {"closing tag first", "</user><user>bob</user>", "</user><user>bob</user>"},
              {"no closing tag", "<user>bob", "<user>bob"},
              {"Kelvin sign, whose lower case has fewer bytes",
               "\xE2\x84\xAA<User>\xC3\x84\xFF\n</User>!", "\xE2\x84\xAA<User>****</User>!"}};
  ASSERT_TRUE(OpenOn(target, log));
  for (const auto& row : rows) {
    Write(target, row.message);
    EXPECT_EQ(LastMessage(), row.written) << row.name;
  }
}

}  // namespace
}  // namespace test
