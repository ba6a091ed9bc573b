#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "esd/log/updater_log.h"
#include "platform/system_version.h"
#include "tests/log_support.h"
#include "welko/header_block.h"
#include "welko/interface_language.h"
#include "welko/log_backups.h"
#include "welko/log_redaction.h"
#include "welko/log_switches.h"

namespace test {
namespace {

constexpr std::uintmax_t kMiB = 1048576;

struct LogTarget : TreeTest {
  LogTarget() { fs::create_directories(folder); }
  void MakeLog(std::uintmax_t size) const {
    WriteFile(log, "old text\n");
    fs::resize_file(log, size);
  }
  const fs::path folder = top / "logs", log = folder / "own.log", user_logs = home / "Library/Logs";
  welko::LogTargetDefault target{"T"};
};

using LogHeader = TreeTest;

TEST(LogLine, CarriesLocalTimeLevelContextThreadAndMessage) {
  SetTimeZone("EST5");
  EXPECT_EQ(welko::FormatLogLine(1367421630007, 60, {"a", nullptr, "c"}, "77", "text", " | ", {}),
            "05/01/13 10:20:30:007 | [FATAL] | a |  | c |  |  |  | 77 | text");
  EXPECT_EQ(welko::FormatLogLine(1367421630999, 10, {}, "77", "<User>eyJa.eyJb</User>", " | ", {}),
            "05/01/13 10:20:30:999 | [WARN] |  |  |  |  |  |  | 77 | "
            "Found access/device token. Log skipped.");
}

TEST(LogLine, HidesTokensAndTheFirstElementOfEachKey) {
  std::string all, all_masked;  // each replacement changes the length before the next key's turn
  for (const std::string key : {"ProxyUserName", "Proxy-User", "ProxyUser", "User", "UserName",
                                "Proxy-Password", "ProxyPassword", "PASSWORD"}) {
    all += "<" + key + ">" + key.substr(3) + "</" + key + ">";
    all_masked += "<" + key + ">****</" + key + ">";
  }
  const std::string skipped = "Found access/device token. Log skipped.";
  const std::pair<std::string, std::string> rows[] = {
      {"eyJ\nand .eyJ", skipped},
      {".eyJ b eyJ", ".eyJ b eyJ"},
      {all, all_masked},
      {"<user>a</User><user>b</user>", "<user>****</User><user>b</user>"},
      {"<password></password>", "<password></password>"},
      {"</user><user>bob</user>", "</user><user>bob</user>"},
      {"<user>bob", "<user>bob"},
      // The Kelvin sign, whose lower case has fewer bytes.
      {"\xE2\x84\xAA<User>\xC3\x84\xFF\n</User>!", "\xE2\x84\xAA<User>****</User>!"}};
  for (const auto& [message, written] : rows) {
    const std::string line =
        welko::FormatLogLine(0, 30, {}, "", message, "|", welko::CredentialKeys());
    EXPECT_EQ(line.substr(line.rfind('|') + 1), written);
  }
}

TEST_F(LogTarget, SharesANewFileWithOneHeaderAndWritesWhatReachesItsLevel) {
  umask(0077);
  welko::LogTargetDefault second("T");
  ASSERT_TRUE(OpenOn(target, log));
  ASSERT_TRUE(OpenOn(second, log));
  Write(target, "eyJa.eyJb", 20);  // dropped, though its line would say WARN
  for (const int level : {29, 50, 30, 40, 70}) Write(target, "text", level);
  Write(second, "text", 31);
  Lines expected;
  for (const std::string level : {"ERROR", "INFO", "WARN", "NONE", "ALL"}) {
    expected.push_back("TIME | [" + level + "] | a | b | c | d | e | f | TID | text");
  }
  EXPECT_EQ(LinesAfterHeader(log), expected);
  EXPECT_EQ(ReadLog(log)[1], "TIME | [INFO] | a | b | c | d | e | f | TID | Bit: 64");
  EXPECT_TRUE(ReadLines(log)[6].ends_with(" | " + std::to_string(gettid()) + " | text"));
  EXPECT_EQ(fs::status(log).permissions(), fs::perms{0666});
  WriteFile(folder / "old.log", "an old line\n");
  ASSERT_TRUE(OpenOn(second, folder / "old.log"));
  Write(second, "text");
  EXPECT_EQ(ReadLog(folder / "old.log"), (Lines{"an old line", expected[1]}));
  EXPECT_EQ(fs::status(folder / "old.log").permissions(), fs::perms{0600});
}

TEST_F(LogTarget, DropsLinesWhileClosedAndGoesOnInTheFileItIsGiven) {
  EXPECT_FALSE(target.SetLogFile("../own.log", folder.c_str()));
  EXPECT_FALSE(target.Open());
  Write(target, "too early");
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

TEST_F(LogTarget, TakesTheFirstSwitchFileThatIsAFileAndTheDefaultFilesWithoutAnother) {
  const struct {
    Lines present;  // a folder where the name ends in "/"
    int level, expected;
  } rows[] = {{{"own.trace", "own.debug"}, 40, 10},
              {{"own.debug", "quib.trace"}, 21, 20},
              {{"own.debug", "quib.trace"}, 19, 19},
              {{"own.trace/", "quib.debug"}, 40, 20},
              {{"quib.trace/", "own.log.trace", "Welko.trace"}, 40, 40}};
  for (const auto& row : rows) {
    fs::remove_all(user_logs);
    for (const std::string& name : row.present) {
      fs::create_directories((user_logs / name).parent_path());
      if (!name.ends_with('/')) WriteFile(user_logs / name, "");
    }
    EXPECT_EQ(welko::ApplyLogSwitches("own.log", row.level), row.expected) << row.present[0];
  }
  welko::LogTargetDefault traced("T");  // by Welko.trace, the name that it begins with
  EXPECT_TRUE(traced.Open());
  Write(traced, "users", 10);
  EXPECT_EQ(MessagesAfterHeader(user_logs / "Welko.log"), Lines{"users"});
  EXPECT_TRUE(traced.SetLogFile("", nullptr));
  Write(traced, "suites", 10);
  EXPECT_EQ(MessagesAfterHeader(user_logs / "Lumora/Lumdesk/Welko.log"), Lines{"suites"});
}

TEST_F(LogTarget, RollsOverAtOpenFromTheLimitOfItsLevelOnAndKeepsOldBackupsWhenTold) {
  const fs::path old_backup = welko::BackupPath(log, std::time(nullptr) - 2 * 86400);
  const std::tuple<int, std::uintmax_t, std::string> rows[] = {{10, 50 * kMiB, "keeplogs"},
                                                               {20, 20 * kMiB, "keeplogs\n"},
                                                               {30, 10 * kMiB, "keeplog"},
                                                               {0, 10 * kMiB, ""}};
  for (const auto& [level, limit, quib_trace] : rows) {
    fs::remove_all(folder);
    WriteFile(old_backup, "");
    WriteFile(folder / "quib.trace", quib_trace);
    target.SetLogLevel(level);
    MakeLog(limit - 1);
    ASSERT_TRUE(OpenOn(target, log));
    MakeLog(limit);
    EXPECT_EQ(Names(folder).size(), 3U) << level;
    ASSERT_TRUE(OpenOn(target, log));
    Write(target, "new text");
    const bool kept = quib_trace == "keeplogs";
    EXPECT_EQ(fs::exists(old_backup), kept) << quib_trace;
    const fs::path backup = folder / Names(folder)[kept ? 1 : 0];
    ASSERT_EQ(fs::file_size(backup), limit) << level;
    EXPECT_EQ(ReadLines(backup)[0], "old text");
    EXPECT_EQ(MessagesAfterHeader(log), Lines{"new text"});
    target.Close();
  }
}

TEST_F(LogTarget, RollsOverWhenALineFollowsOne15MinutesAfterTheLastCheck) {
  SetTimeZone("UTC0");
  const std::int64_t before = std::time(nullptr);
  ASSERT_TRUE(OpenOn(target, log));
  const std::int64_t after = std::time(nullptr);
  MakeLog(10 * kMiB);
  Write(target, "1", 30, before + 899);
  Write(target, "2", 30, after + 900);
  EXPECT_EQ(Names(folder), Lines{"own.log"});
  Write(target, "3", 30, after + 901);
  Write(target, "4", 30, after + 1799);
  EXPECT_EQ(Names(folder).size(), 2U);
  EXPECT_EQ(MessagesAfterHeader(log), (Lines{"3", "4"}));
  // The next 15 minutes count from line 2. No backup's name is in the way of one made too early.
  SetTimeZone("EST5");
  MakeLog(10 * kMiB);
  Write(target, "5");
  EXPECT_GT(fs::file_size(log), 10 * kMiB);
}

TEST_F(LogTarget, KeepsItsTextWhereABackupCannotBeWritten) {
  WriteFile(folder / "taken", "backup");
  fs::create_symlink(top / "elsewhere", folder / "link");
  MakeLog(10 * kMiB);
  for (const char* name : {"taken", "link"}) EXPECT_FALSE(welko::MoveLogText(log, folder / name));
  EXPECT_EQ(ReadFile(folder / "taken"), "backup");
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = 4 * kMiB;  // the disk is full then
  setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_TRUE(OpenOn(target, log));
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_FSIZE, &limit);
  Write(target, "new text");
  EXPECT_EQ(Names(folder), (Lines{"link", "own.log", "taken"}));
  const Lines lines = ReadLog(log);
  ASSERT_EQ(lines.size(), 2U) << "a header";
  EXPECT_EQ(lines[0] + Messages({lines[1]})[0], "old textnew text");
}

TEST_F(LogTarget, KeepsTheNewestBackupsOfTheLastDays) {
  SetTimeZone("EST5");
  constexpr std::int64_t kMorning = 1367409600;  // 1 May 2013, 7:00 there
  EXPECT_EQ(welko::BackupPath("/x.d/a.b.log", kMorning + 7), "/x.d/a.b 2013-05-01 07-00-07.log");
  EXPECT_EQ(welko::BackupPath("/x.d/log", kMorning), "/x.d/log 2013-05-01 07-00-00");
  // By log: names that stay, among them its own, and names that go.
  const std::pair<Lines, Lines> rows[] = {
      {{"Welko.log", "Welko 2013-05-01 09-00-00.log", "Welko 2013-05-01 10-00-00.log", "Other.log",
        "My Welko.log", "sub/Welko 2013-04-20 10-00-00.log", "welko.log"},
       {"Welko 2013-05-01 08-00-00.log", "Welko 2013-04-20 10-00-00.log", "Welko.trace", "Welko",
        "Welkoff.log", "Welko old/x.log"}},
      {{"Welko.log", "Welko 2013-04-30 00-00-00.log", "Welko 2013-05-01 00-00-00.log"},
       {"Welko 2013-04-29 23-59-59.log", "Welko 2013-05-02 00-00-00.log"}},
      {{"Welko", "Welko 2013-05-01 09-00-00"}, {"Welko.log"}}};
  for (const auto& [kept, removed] : rows) {
    fs::remove_all(folder);
    for (const std::string& name : kept) WriteFile(folder / name, "");
    for (const std::string& name : removed) WriteFile(folder / name, "");
    welko::RemoveOldBackups(folder / kept[0], kMorning, 2);
    for (const auto& name : kept) EXPECT_TRUE(fs::exists(folder / name)) << name;
    for (const auto& name : removed) EXPECT_FALSE(fs::exists(folder / name)) << name;
  }
}

TEST_F(LogTarget, OfTheUpdaterWritesTheLevelsOfItsTable) {
  // By configured and by message level: the first letter of the level in the line written.
  const std::string expected[] = {"............", "II..........", "III.........", "IIID........",
                                  "IIIDD.......", "III..I......", "III..II.....", "III..III....",
                                  "III..IIII...", "III..IIIII..", "IIIDDIIIIIA.", "III..IIIII.I"};
  for (int configured = 0; configured < 12; ++configured) {
    const fs::path file = top / std::to_string(configured);
    InChild([&] {
      esd::InitUpdaterLog(file, configured, "", "", "");
      for (int level = 0; level < 12; ++level) esd::UpdaterLogInt(level, "%s%1", level);
      return 0;
    });
    EXPECT_EQ(fs::exists(file), configured > 0);
    std::string written(12, '.');
    for (const std::string& line : ReadLog(file)) {
      unsigned level = 0;
      if (std::sscanf(Messages({line})[0].c_str(), "%%s%%1 = %u", &level) == 1) {
        written.at(level) = line.at(8);
      }
    }
    EXPECT_EQ(written, expected[configured]) << configured;
  }
}

TEST_F(LogHeader, InterfaceLanguageIsTheFirstOneSpokenByATagThatIsCutUntilItFits) {
  const auto ask = [](const char* languages, const char* locale) {
    setenv("LANGUAGE", languages, 1);
    setenv("LANG", locale, 1);
    std::string out = "left over";
    EXPECT_TRUE(welko::GetUserInterfaceLanguage(out));
    return out;
  };
  const std::pair<const char*, const char*> rows[] = {
      {"AR", "fr_MA"},      {"xx:He:fr", "en_IL"}, {"xx", "en_US"},
      {"EN-GB", "en_GB"},   {"zh-HK", "zh_TW"},    {"zh-Hant-HK", "zh_TW"},
      {"zh-HANT", "zh_CN"}, {"es-419", "es_ES"},   {"fr-CA-x", "fr_CA"},
      {"DE-at", "de_DE"},   {"d:fr", "fr_FR"},     {"xx-YY-variant:fr", "fr_FR"}};
  for (const auto& [languages, code] : rows) EXPECT_EQ(ask(languages, "ar_MA.UTF-8"), code);
  EXPECT_EQ(ask("ar", "ar_EG"), "en_AE");
  EXPECT_EQ(ask("", "sv_FI.UTF-8@euro"), "sv_SE");
}

TEST_F(LogHeader, DescribesTheSuiteAndTheSystemWhereTheTreeNamesThem) {
  const auto write = [this](const char* path, const std::string& key, const std::string& value) {
    WriteFile(root / path,
              "<plist><dict><key>" + key + "</key><string>" + value + "</string></dict></plist>");
  };
  write("System/Library/CoreServices/SystemVersion.plist", "ProductVersion", "11.6");
  const platform::SystemVersion system = platform::FindSystemVersion().value();
  decltype(welko::HeaderBlock::entries) expected = {{"Bit: ", "64"},
                                                    {"OS Locale: ", "en_US"},
                                                    {"OS Name: ", "Mac OS 11.6.0"},
                                                    {"OS Version: ", "11.6.0"}};
  EXPECT_EQ(welko::DescribeSystem(system).entries, expected);
  write("Applications/Utilities/Vantre Lumora/Lumdesk/Lumora.app/Contents/Info.plist",
        "CFBundleShortVersionString", "5.1 &lt;b&gt;");
  expected.insert(expected.begin(), {"Lumdesk Version: ", "5.1 <b>"});
  EXPECT_EQ(welko::DescribeSystem(system).entries, expected);
}

}  // namespace
}  // namespace test
