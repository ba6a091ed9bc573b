// What the folders of a machine and the languages of its user make of logs and messages.

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "esd/log/updater_log.h"
#include "esd/prefs/resource_locker.h"
#include "tests/log_support.h"
#include "welko/interface_language.h"
#include "welko/log_level.h"
#include "welko/log_switches.h"

namespace test {
namespace {

using testing::StartsWith;

using Machine = LogTest;

TEST_F(Machine, LogsThreadIdsWhereTheSystemHasThem) {
  const std::string id = std::to_string(gettid());
  const std::pair<std::string, std::string> rows[] = {
      {"10.5.8", ""}, {"10.6.0", id}, {"11.3.0", id}};
  for (const auto& [version, thread_id] : rows) {
    SCOPED_TRACE("system version " + version);
    WriteFile(
        root / "System/Library/CoreServices/SystemVersion.plist",
        "<plist><dict><key>ProductVersion</key><string>" + version + "</string></dict></plist>");
    fs::resize_file(log, 0);
    welko::LogTargetDefault own("T");
    ASSERT_TRUE(OpenOn(own, log));
    Write(own, "text");
    EXPECT_EQ(Messages(ReadLog(log)).at(4), "OS Version: " + version);
    EXPECT_THAT(ReadLines(log).back(), testing::EndsWith(" | f | " + thread_id + " | text"));
  }
}

TEST_F(Machine, LogMergesAReplacementIntoTheHeaderOfAnInstalledSuite) {
  WriteFile(root / "Applications/Utilities/Vantre Lumora/Lumdesk/Lumora.app/Contents/Info.plist",
            "<plist><dict><key>CFBundleShortVersionString</key><string>5.1 &lt;b&gt;</string>"
            "</dict></plist>");
  welko::LogTargetDefault own("T");
  ASSERT_TRUE(OpenOn(own, log));
  const welko::HeaderBlock replacement = {"top", {{"New: ", "1"}, {"OS Locale: ", "xx"}}, "bottom"};
  const std::string merged =
      "top\nLumdesk Version: 5.1 <b>\nBit: 64\nOS Locale: xx\nOS Name: Mac OS 0.0.0\n"
      "OS Version: 0.0.0\nNew: 1\nbottom\n";
  own.WriteHeader(welko::kLogWarn, {}, &replacement);
  EXPECT_THAT(ReadLog(log).at(0), StartsWith("TIME | [WARN] | "));
  fs::resize_file(log, 0);
  Write(own, "text");
  EXPECT_EQ(Text(Messages(ReadLog(log))), merged + "text\n") << "in the header of an empty file";
}

TEST_F(Machine, LogTakesItsLevelFromTheFirstSwitchFile) {
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
        << "level " << row.level << " with the files: " << Text(row.files);
  }
}

TEST_F(Machine, LogTakesAFifoForNoSwitchFile) {
  fs::create_directories(user_logs);
  mkfifo((user_logs / "quib.trace").c_str(), 0600);
  ExpectInChild([this] {  // opening a FIFO would wait for ever
    EXPECT_EQ(welko::ApplyLogSwitches("own.log", 40), 40);
    EXPECT_FALSE(welko::KeepsOldLogs(user_logs));
  });
}

TEST_F(Machine, UpdaterLogGoesToTheDefaultFileAndItsSwitchesWhereItsPathNamesNoFolder) {
  WriteFile(user_logs / "Welko.trace", "");
  ExpectInChild([] {
    EXPECT_FALSE(esd::InitUpdaterLog("own.log", 5, "", "", ""));
    esd::UpdaterLogInt(3, "%s%1", 7);
  });
  EXPECT_EQ(MessagesAfterHeader(user_logs / "Welko.log"),
            ">>> Vantre Updater Log Begin >>>\n%s%1 = 7\n");
}

TEST_F(Machine, LanguageIsTheFirstPreferredOneThatIsSpoken) {
  const struct {
    const char *languages, *locale, *code;
  } rows[] = {{"AR", "ar_DZ.UTF-8", "fr_MA"}, {"ar", "ar_TN", "fr_MA"},
              {"ar", "ar_MA", "fr_MA"},       {"ar", "fr_MA", "en_AE"},
              {"ar-MA:sv", "C", "sv_SE"},     {"xx:He:fr", "C", "en_IL"},
              {"xx", "C", "en_US"},           {"", "sv_FI.UTF-8@euro", "sv_SE"}};
  for (const auto& row : rows) {
    setenv("LANGUAGE", row.languages, 1);
    setenv("LANG", row.locale, 1);
    std::string code = "left over";
    EXPECT_TRUE(welko::GetUserInterfaceLanguage(code));
    EXPECT_EQ(code, row.code) << "for \"" << row.languages << "\" in the locale " << row.locale;
  }
}

TEST_F(Machine, KeepsALockAsAPrivateSemaphoreUnderTheDigestOfItsResource) {
  const std::string semaphore = "/dev/shm/sem.kAFQmDzST7DWlj99KOF_cg==";  // as RFC 1321 has it
  unlink(semaphore.c_str());
  esd::ResourceLocker lock("abc", 3000);
  EXPECT_TRUE(lock.Lock());
  EXPECT_THAT(Rights(semaphore), StartsWith("mode 0700,"));
}

}  // namespace
}  // namespace test
