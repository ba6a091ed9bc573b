#include "ctl/forecast.h"

#include <sys/statvfs.h>
#include <unistd.h>

#include <boost/date_time/gregorian/formatters.hpp>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "ctl/held_log_lock.h"
#include "ctl/prefs_view.h"
#include "ctl/program_forecast.h"
#include "ctl/settings.h"
#include "ctl/user_name.h"
#include "ctl/user_settings.h"
#include "driver/check_schedule.h"
#include "driver/log_settings.h"
#include "esd/prefs/updater_folders.h"
#include "esd/prefs/updater_prefs.h"
#include "esd/util/path.h"
#include "platform/bundle.h"
#include "platform/file_type.h"
#include "platform/folder_making.h"
#include "welko/library_logs.h"
#include "welko/log_file_lock.h"

namespace ctl {
namespace {

using boost::gregorian::date;
using wakerly::CheckReason;

// Whether the run's look-ups make the folder: it is one of those, or above one.
bool IsMadeByRun(const std::string& folder) {
  // With ".." or "~" it may lead elsewhere than it reads.
  if (folder.starts_with('~') || ("/" + folder + "/").find("/../") != std::string::npos)
    return false;
  const std::string above = platform::StandardizePath(folder) + "/";
  const auto is_below = [&](const std::string& made) {
    return (platform::StandardizePath(made) + "/").starts_with(above);
  };
  std::string made;
  return (esd::GetUpdaterPrefsFolder(made) && is_below(made)) ||
         is_below(welko::GetConsoleUserLogsFolder().value_or(""));
}

std::optional<std::string> FindObstacle(const std::string& path) {
  const std::string folder = esd::GetParentFolder(path);
  const bool is_missing = platform::TypeOfLink(folder) == platform::FileType::kNone;
  if (is_missing && IsMadeByRun(folder)) return std::nullopt;
  return wakerly::FindLogObstacle(path);
}

// Whether the file system that takes the log has no room for a line more.
bool IsDiskFull(const std::string& path) {
  constexpr std::uint64_t kLongLine = 512;
  struct statvfs volume {};
  const std::int64_t size = platform::SizeOf(path).value_or(0);
  const std::string place = size > 0 ? path : esd::GetParentFolder(path);
  if (statvfs(place.c_str(), &volume) != 0 || volume.f_frsize == 0) return false;
  if ((geteuid() == 0 ? volume.f_bfree : volume.f_bavail) != 0) return false;
  const std::uint64_t used = static_cast<std::uint64_t>(size) % volume.f_frsize;
  return used == 0 || volume.f_frsize - used < kLongLine;
}

// A level of 1 or more: whether its lines reach the file.
void ForecastLogFile(Forecast::Log& log, const std::string& settings) {
  if (!log.path) {
    log.finding = {Id::kLogNoFolder, "There is no folder for the log: " + settings + "."};
    return;
  }
  const std::string shown = ShownLogPath(*log.path);
  if (const std::optional<std::string> obstacle = FindObstacle(*log.path)) {
    log.finding = {Id::kLogUnwritable,
                   shown + " cannot be written: " + *obstacle + "; " + settings + "."};
  } else if (IsDiskFull(*log.path)) {
    log.finding = {Id::kLogDiskFull, "The disk of " + shown + " is full; " + settings + "."};
  } else if (!welko::LogFileLock::LookAt(*log.path) && errno == EACCES) {
    log.finding = {Id::kLogLockDenied, "The semaphore set that guards " + shown +
                                           " belongs to another user; " + settings + "."};
  } else if (const auto lock = FindHeldLogLock(*log.path); lock && lock->is_stuck) {
    log.finding = {Id::kLogLockStuck, "The lock of " + shown +
                                          " is taken, and no living process holds it: the run "
                                          "waits for it without an end, and does nothing else; " +
                                          settings + "."};
  } else {
    log.writes = true;
    log.finding = {Id::kLogWritten, "The log is written; " + settings + "."};
  }
}

Forecast::Log ForecastLog(UserSettings& user) {
  Forecast::Log log;
  if (!user.view.path()) {
    log.finding = {Id::kLogNoFolder,
                   "Neither the home folder nor the temporary folder has a place for the "
                   "preferences, so there is no log."};
    return log;
  }
  const Setting<std::string> path = ReadLogSetting(user);
  const int default_level = wakerly::ChooseLog("", wakerly::kLogLevelNotSet).level;
  const Setting<int> level = user.settings.Read("LogLevel", default_level);
  if (user.is_locked) {
    log.finding = {Id::kLogPreferencesLocked,
                   "The preferences are locked, so the run knows neither path nor level."};
    return log;
  }
  log.path = FindLogFile(user);
  if (!level.value) {
    log.finding = {Id::kLogLevelUnreadable, Describe(level) + " is no number, so there is no log."};
    return log;
  }
  log.level = wakerly::ChooseLog(*path.value, *level.value).level;
  if (*log.level < 1) {
    log.finding = {Id::kLogOff, Describe(level) + " wants no log."};
  } else {
    ForecastLogFile(log, Describe(path) + ", " + Describe(level));
  }
  return log;
}

Forecast::Updater ForecastUpdater(const PrefsView& view, Settings& settings) {
  if (!view.path()) {
    return {false, {Id::kUpdaterNoFolder, "There is no folder for the administrator's file."}};
  }
  const Setting<bool> suppressed = settings.Read(SuppressedKey());
  const std::string held = Describe(suppressed);
  if (IsPrefsLockHeld(*view.path())) {
    return {false, {Id::kUpdaterLocked, *view.path() + " is locked, so the run warns."}};
  }
  if (!suppressed.value) {
    return {false, {Id::kUpdaterUnreadable, held + " is neither 1 nor 0, so the run warns."}};
  }
  if (!*suppressed.value) return {true, {Id::kUpdaterEnabled, held + "."}};
  return {false, {Id::kUpdaterSuppressed, held + ": the run warns, and goes on."}};
}

Id IdOf(CheckReason reason) {
  switch (reason) {
    case CheckReason::kLastCheckUnreadable:
      return Id::kCheckPreferencesLocked;
    case CheckReason::kNeverRun:
      return Id::kCheckNeverRun;
    case CheckReason::kFrequencyUnreadable:
      return Id::kCheckFrequencyUnreadable;
    case CheckReason::kNever:
      return Id::kCheckNever;
    case CheckReason::kInvalidTime:
      return Id::kCheckInvalidTime;
    case CheckReason::kNoDate:
      return Id::kCheckNoDate;
    case CheckReason::kInvalidDate:
      return Id::kCheckInvalidDate;
    case CheckReason::kClockFails:
      return Id::kCheckClockFails;
    case CheckReason::kDateAhead:
      return Id::kCheckDateAhead;
    case CheckReason::kElapsed:
      return Id::kCheckDue;
    case CheckReason::kNotElapsed:
      break;
  }
  return Id::kCheckNotDue;
}

// The meaning of `id` as the begin of a sentence whose settings follow.
std::string Because(Id id) {
  std::string sentence = MeaningOf(id);
  sentence.back() = ':';
  return sentence + " ";
}

const char* PeriodName(int frequency) {
  if (frequency == esd::kCheckNever) return "never";
  if (frequency == 0) return "daily";
  return frequency == 1 ? "weekly" : "monthly";
}

Forecast::Check ForecastCheck(UserSettings& user, const date& today) {
  if (!user.view.path()) {
    return {false, std::nullopt, {Id::kCheckNoFolder, "There is no folder for the preferences."}};
  }
  const UserKeys keys;
  const Setting<std::string> last = user.settings.Read(keys.LastDateCheck());
  const Setting<int> frequency = user.settings.Read(keys.UpdaterPrefSchedCheckFreq());
  if (user.is_locked) {
    return {false,
            std::nullopt,
            {Id::kCheckPreferencesLocked, *user.view.path() + " is locked, so nothing is due."}};
  }
  const wakerly::CheckSchedule schedule =
      wakerly::ScheduleCheck(last.value, frequency.value, today);
  Forecast::Check check{schedule.due, std::nullopt, {IdOf(schedule.reason), ""}};
  if (schedule.due) {
    check.next_due = today;
  } else if (schedule.due_from) {
    check.next_due = std::max(*schedule.due_from, today);
  }
  check.finding.why = Because(check.finding.id) + Describe(last) + ", " + Describe(frequency);
  if (frequency.value) check.finding.why.append(", ").append(PeriodName(*frequency.value));
  check.finding.why += ".";
  return check;
}

Forecast::Check CheckThatIsNotAsked(bool has_notifier_path) {
  if (!has_notifier_path) {
    return {std::nullopt, std::nullopt, {Id::kCheckNotReached, "The run ends before it."}};
  }
  return {std::nullopt,
          std::nullopt,
          {Id::kCheckNotAsked, "A scheduled run starts the notifier whenever it comes."}};
}

void Append(Value::Array& all, const Value::Array& more) {
  all.insert(all.end(), more.begin(), more.end());
}

}  // namespace

Forecast ForecastRun(bool is_scheduled, const date& today) {
  return ForecastRun(is_scheduled, today, PrefsView(esd::GetUpdaterPrefsFile(esd::kPrefsFileName)),
                     PrefsView(esd::GetAdminPrefsFile()));
}

Forecast ForecastRun(bool is_scheduled, const date& today, const PrefsView& user_file,
                     const PrefsView& admin_file) {
  UserSettings user(user_file);
  Settings admin(admin_file, Source::kAdministrator);

  Forecast forecast;
  forecast.is_scheduled = is_scheduled;
  forecast.today = today;
  forecast.user = UserName(geteuid());
  forecast.preferences = user_file.path();
  forecast.preferences_state = user_file.state();
  forecast.administrator_preferences = admin_file.path();
  forecast.wipes_preferences = user.is_wiped;
  forecast.log = ForecastLog(user);
  forecast.updater = ForecastUpdater(admin_file, admin);
  std::string notifier;
  const bool has_path = esd::GetNotifierExecutablePath(notifier);
  const bool asks = has_path && !is_scheduled;
  forecast.check = asks ? ForecastCheck(user, today) : CheckThatIsNotAsked(has_path);
  forecast.notifier = ForecastNotifier(has_path ? std::optional(notifier) : std::nullopt,
                                       forecast.check.due.value_or(true));
  forecast.library = ForecastLibrary();
  forecast.exit_status = has_path ? 0 : 1;
  forecast.settings = user.settings.list();
  Append(forecast.settings, admin.list());
  return forecast;
}

}  // namespace ctl
