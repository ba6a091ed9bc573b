#include <gmock/gmock.h>

#include <cstdarg>
#include <regex>

#include "esd/log/updater_log.h"
#include "tests/log_support.h"

namespace test {
namespace {

using testing::StartsWith;

using LogTarget = LogTest;
using UpdaterLog = LogTest;

TEST_F(LogTarget, WritesWhatReachesItsLevel) {
  ASSERT_TRUE(OpenOn(target, log));
  Write(target, "eyJa.eyJb", 20);  // dropped, though its line would say WARN
  for (const int level : {40, 29, 30, 31, 50, 70}) {
    Write(target, "level " + std::to_string(level), level);
  }
  Write(target, "eyJa.eyJb");
  EXPECT_EQ(ReadLog(log)[1], "TIME | [INFO] | a | b | c | d | e | f | TID | Bit: 64");
  EXPECT_EQ(Text(LinesAfterHeader(ReadLog(log))),
            "TIME | [WARN] | a | b | c | d | e | f | TID | level 40\n"
            "TIME | [INFO] | a | b | c | d | e | f | TID | level 30\n"
            "TIME | [ALL] | a | b | c | d | e | f | TID | level 31\n"
            "TIME | [ERROR] | a | b | c | d | e | f | TID | level 50\n"
            "TIME | [NONE] | a | b | c | d | e | f | TID | level 70\n"
            "TIME | [WARN] | a | b | c | d | e | f | TID | "
            "Found access/device token. Log skipped.\n");
}

TEST_F(LogTarget, DropsLinesWithoutAnOpenFile) {
  fs::create_directories(folder / "folder.log");
  const std::pair<const char*, fs::path> refused[] = {
      {"../own.log", folder}, {"folder.log", folder}, {"own.log", folder / "missing"}};
  Write(target, "too early");
  ASSERT_TRUE(OpenOn(target, log));
  for (const auto& [name, refused_folder] : refused) {
    SCOPED_TRACE("refused: " + std::string(name) + " in " + refused_folder.string());
    EXPECT_FALSE(target.SetLogFile(name, refused_folder.c_str()));
    Write(target, "while refused");
    EXPECT_FALSE(target.Open());
  }
  ASSERT_TRUE(OpenOn(target, log));
  EXPECT_TRUE(target.Close());
  Write(target, "while closed");
  EXPECT_TRUE(target.Open());
  Write(target, "text");
  EXPECT_EQ(MessagesAfterHeader(log), "text\n");
}

TEST_F(LogTarget, GoesOnInTheFileThatItIsGiven) {
  ASSERT_TRUE(OpenOn(target, log));
  EXPECT_TRUE(target.SetLogFile("other.log", folder.c_str()));
  Write(target, "text");
  EXPECT_EQ(MessagesAfterHeader(folder / "other.log"), "text\n");
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
    // Once more, as another target would get them.
    for (int turn = 0; turn < 2; ++turn) target.Log(30, {}, format, &arguments, 0, true);
    va_end(arguments);
    return LastMessage();
  };
  ASSERT_TRUE(OpenOn(target, log));
  EXPECT_EQ(logged("%d of %s", 7, "many"), "7 of many");
  EXPECT_EQ(logged("%4096s", "x").size(), 4095U);
  Write(target, std::string(4095, 'x') + "%d");
  EXPECT_EQ(LastMessage().size(), 4097U) << "without arguments";
}

TEST_F(LogTarget, HidesCredentialsAndTokens) {
  // In one message, where each mask changes the length of what stands before the next.
  std::string all, masked;
  for (const std::string key : {"ProxyUserName", "Proxy-User", "ProxyUser", "User", "UserName",
                                "Proxy-Password", "ProxyPassword", "PASSWORD"}) {
    all += "<" + key + ">" + key.substr(3) + "</" + key + ">";
    masked += "<" + key + ">****</" + key + ">";
  }
  const struct {
    std::string name, message, written;
  } rows[] = {{"all keys", all, masked},
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

TEST_F(UpdaterLog, WritesTheLevelsOfItsTable) {
  const std::string begin = "INFO >>> Vantre Updater Log Begin >>>\nINFO 0\nINFO 1\n";
  const std::pair<int, std::string> rows[] = {
      {0, ""},
      {4, begin + "INFO 2\nDEBUG 3\nDEBUG 4\n"},
      {5, begin + "INFO 2\nINFO 5\n"},
      {9, begin + "INFO 2\nINFO 5\nINFO 6\nINFO 7\nINFO 8\nINFO 9\n"},
      {10, begin + "INFO 2\nDEBUG 3\nDEBUG 4\nINFO 5\nINFO 6\nINFO 7\nINFO 8\nINFO 9\nALL 10\n"}};
  const std::regex fields(R"(TIME \| \[(\w+)\].* \| )");
  for (const auto& [configured, expected] : rows) {
    SCOPED_TRACE("configured level " + std::to_string(configured));
    RemoveLog(log);
    ExpectInChild([&, level = configured] {
      EXPECT_EQ(esd::InitUpdaterLog(log, level, "", "", ""), level > 0);
      for (int number = 0; number < 11; ++number) esd::UpdaterLog(number, std::to_string(number));
    });
    EXPECT_EQ(fs::exists(log), configured > 0) << "whether there is a log";
    EXPECT_EQ(std::regex_replace(Text(LinesAfterHeader(ReadLog(log))), fields, "$1 "), expected);
  }
}

}  // namespace
}  // namespace test
