#include "driver/enabled_check.h"

#include <optional>

#include "esd/log/updater_log.h"
#include "esd/prefs/resource_locker.h"
#include "tests/run_support.h"

namespace test {
namespace {

struct EnabledCheck {
  const char* name;
  std::optional<std::string> file = std::nullopt;  // the administrator's preferences
  bool has_folder = true;
  bool is_locked = false;
  const char* logged = nullptr;
  bool enabled = false;
};

constexpr const char* kEnabled = "UCIsUpdaterEnabled : UpdaterIsEnabled.";
constexpr const char* kSuppressed = "CheckIfUpdaterIsEnabled : UpdaterIsNotEnabled.";
constexpr const char* kFailed =
    "Error: CheckIfUpdaterIsEnabled - Failed to get admin preferences for updater suppression";

// The check reads and reports, and never changes the administrator's file.
TEST_F(RunTest, UpdaterIsEnabledUnlessSuppressedOrNobodyCanTell) {
  const auto suppressed = [](const char* value) { return PrefsText({{"Suppressed", value}}); };
  const EnabledCheck checks[] = {
      {.name = "no file", .logged = kEnabled, .enabled = true},
      {.name = "empty file", .file = "", .logged = kEnabled, .enabled = true},
      {.name = "no entry", .file = PrefsText({}), .logged = kEnabled, .enabled = true},
      {.name = "no value", .file = suppressed(""), .logged = kEnabled, .enabled = true},
      {.name = "Suppressed 0", .file = suppressed("0"), .logged = kEnabled, .enabled = true},
      {.name = "Suppressed 1", .file = suppressed("1"), .logged = kSuppressed},
      {.name = "Suppressed yes", .file = suppressed("yes"), .logged = kFailed},
      {.name = "not XML", .file = suppressed("<"), .logged = kEnabled, .enabled = true},
      {.name = "locked file", .file = suppressed("0"), .is_locked = true, .logged = kFailed},
      {.name = "no folder for the file", .has_folder = false}};
  for (const EnabledCheck& check : checks) {
    SCOPED_TRACE(check.name);
    fs::remove_all(support);
    if (check.has_folder) fs::create_directories(support);
    if (check.file) WriteFile(admin_prefs, *check.file);
    MakeEmptyLog(log);
    esd::ResourceLocker other_process(admin_prefs.string(), 0);
    ASSERT_TRUE(!check.is_locked || other_process.Lock());
    ExpectInChild([&] {
      esd::InitUpdaterLog(log, 3, "", "UPDATER", "WAKERLY");
      EXPECT_EQ(wakerly::CheckIfUpdaterIsEnabled(), check.enabled);
    });
    Lines expected = {
        LogLine(">>> Vantre Updater Log Begin >>>"),
        LogLine("UpdaterWakerly: Stepped into << CheckIfUpdaterIsEnabled >> call.", "DEBUG"),
        LogLine("UpdaterWakerly : Returning from << CheckIfUpdaterIsEnabled >> call with return "
                "value -  = " +
                    std::to_string(check.enabled),
                "DEBUG")};
    if (check.logged != nullptr) expected.insert(expected.end() - 1, LogLine(check.logged));
    EXPECT_EQ(Text(LinesAfterHeader(ReadLog(log))), Text(expected));
    EXPECT_EQ(fs::exists(admin_prefs), check.file.has_value()) << "is there a file now?";
    EXPECT_EQ(ReadFile(admin_prefs), check.file.value_or(""));
  }
}

}  // namespace
}  // namespace test
