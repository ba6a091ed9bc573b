#include "driver/startup_logging.h"

#include <syslog.h>

#include <string>

#include "esd/log/updater_log.h"
#include "esd/prefs/prefs_lock.h"
#include "esd/prefs/updater_folders.h"
#include "esd/prefs/updater_prefs.h"
#include "esd/util/program_version.h"

namespace wakerly {
namespace {

using esd::VantreUpdaterPrefs;

constexpr int kNotSet = -1;
constexpr int kDefaultLevel = esd::kMessageLevel;

struct LogSettings {
  std::string path;
  int level = 0;
};

// Such a run can report only to the system's own log and to standard error.
void ReportLocked() {
  openlog("wakerly", LOG_PID | LOG_PERROR, LOG_USER);
  syslog(LOG_WARNING,
         "no log for this run: the preferences are locked by another process, or were "
         "by one that was killed");
  closelog();
}

// Fills `settings` as far as the preferences can be read, and writes back what they lack.
void ReadSettings(LogSettings& settings) {
  VantreUpdaterPrefs& prefs = VantreUpdaterPrefs::GetInstance(false);
  const esd::PrefsLock lock(prefs);
  if (!lock.held()) {
    ReportLocked();
    return;
  }
  // Read through the store: the preference objects would answer with their own defaults.
  prefs.GetPref<std::string>("StartupLogFile", settings.path, "");
  prefs.GetPref<int>("LogLevel", settings.level, kNotSet);
  if (settings.path.empty()) {
    settings.path = esd::GetUpdaterPrefsFile(esd::kStartupLogName).value_or("");
    if (!settings.path.empty()) prefs.GetStartupLogFilePref().Set(settings.path);
  }
  if (settings.level == kNotSet) {
    settings.level = kDefaultLevel;
    prefs.GetLogLevelPref().Set(settings.level);
  }
}

void OpenLog(LogSettings settings) {
  if (settings.path.empty()) {
    settings.path = esd::GetUpdaterPrefsFile(esd::kUpdaterLogName).value_or("");
  }
  esd::InitUpdaterLog(settings.path, settings.level, "", "UPDATER", "WAKERLY");
  esd::UpdaterLogNullable(esd::kBannerLevel, "Application Version: ", esd::ProgramVersion());
  esd::UpdaterLogValue(esd::kMessageLevel, "cmdline option: -logFile", settings.path);
  esd::UpdaterLogInt(esd::kMessageLevel, "cmdline option: -logLevel", settings.level);
}

}  // namespace

bool SetUpStartupLogging() {
  LogSettings settings;
  try {
    ReadSettings(settings);
  } catch (...) {
    // There is no log yet to report this in, and what was read until then is still used.
  }
  if (settings.level > 0) OpenLog(settings);
  return true;
}

}  // namespace wakerly
