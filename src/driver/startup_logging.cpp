#include "driver/startup_logging.h"

#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <optional>
#include <string>

#include "driver/log_settings.h"
#include "esd/log/updater_log.h"
#include "esd/prefs/prefs_lock.h"
#include "esd/prefs/resource_locker.h"
#include "esd/prefs/updater_folders.h"
#include "esd/prefs/updater_prefs.h"
#include "esd/util/program_version.h"
#include "esd/util/special_folder.h"
#include "platform/folders.h"
#include "platform/standard_error.h"

namespace wakerly {
namespace {

using esd::VantreUpdaterPrefs;

struct LogSettings {
  std::string path;
  int level = 0;
  std::string obstacle;  ///< why the level is not known; empty where it is
};

// `text` in one short line.
std::string Shown(const std::string& text) {
  constexpr std::size_t kShownBytes = 1000;
  std::string line = text.substr(0, kShownBytes);
  const auto is_control = [](unsigned char byte) { return byte < ' ' || byte == 0x7F; };
  std::replace_if(line.begin(), line.end(), is_control, '?');
  return line;
}

// A run without a log can report only to the system's own log and to standard error.
void ReportNoLog(const std::string& reason) {
  const std::string line = "no log for this run: " + reason;
  openlog("wakerly", LOG_PID, LOG_USER);
  syslog(LOG_WARNING, "%s", line.c_str());
  closelog();
  platform::WriteToStandardError("wakerly[" + std::to_string(getpid()) + "]: " + line + "\n");
}

std::string PrefsFile() { return esd::GetUpdaterPrefsFile(esd::kPrefsFileName).value_or(""); }

std::string DescribeLock() {
  const std::string file = PrefsFile();
  const std::string semaphore = esd::ResourceLocker::SemaphoreOf(file);
  const std::string named = Shown(file) + ", semaphore " + semaphore;
  return esd::ResourceLocker::IsTaken(file)
             ? "the preferences are locked by another process, or were by one that was killed: " +
                   named +
                   "; if neither wakerly nor the updater runs, remove it with: wakerlyctl lock "
                   "--clear"
             : "the preferences cannot be locked, or were let go just now: " + named;
}

std::string DescribeLevel(VantreUpdaterPrefs& prefs) {
  std::string text;
  prefs.GetPref<std::string>("LogLevel", text, "");
  constexpr std::size_t kShownLevel = 40;
  return "LogLevel is no number: \"" + Shown(text.substr(0, kShownLevel)) + "\" in " +
         Shown(PrefsFile());
}

std::string DescribeFailure(const char* what) {
  const std::string file = PrefsFile();
  if (!file.empty()) return Shown(file) + " cannot be read: " + what;
  std::string temporary;
  esd::GetSpecialFolder(esd::kLocalTemporary, temporary, false);
  return std::string("there is no folder for ") + esd::kPrefsFileName +
         ", neither in the home folder (" + Shown(platform::HomeFolder()) +
         ") nor, as this user's own, in the temporary folder (" + Shown(temporary) + ")";
}

// Why no line could be written to the log that `path` stands for.
std::string DescribeLogFile(const std::string& path) {
  const std::optional<std::string> file = esd::UpdaterLogFile(path);
  if (!file) return "there is no folder for the log " + Shown(path);
  return Shown(*file) + " cannot be written: " +
         FindLogObstacle(*file).value_or(
             "not a line was taken; the disk may be full, or there may be no semaphore for it");
}

// Fills `settings` as far as the preferences can be read, and writes back what they lack.
void ReadSettings(LogSettings& settings) {
  VantreUpdaterPrefs& prefs = VantreUpdaterPrefs::GetInstance(false);
  const esd::PrefsLock lock(prefs);
  if (!lock.held()) {
    settings.obstacle = DescribeLock();
    return;
  }
  // Read through the store: the preference objects would answer with their own defaults.
  prefs.GetPref<std::string>("StartupLogFile", settings.path, "");
  if (!prefs.GetPref<int>("LogLevel", settings.level, kLogLevelNotSet)) {
    settings.obstacle = DescribeLevel(prefs);
  }
  const LogChoice choice = ChooseLog(settings.path, settings.level);
  settings.path = choice.path;
  if (choice.writes_path) prefs.GetStartupLogFilePref().Set(choice.path);
  settings.level = choice.level;
  if (choice.writes_level) prefs.GetLogLevelPref().Set(choice.level);
}

// There is no log yet to report a failure in, and what was read until then is still used.
void FindSettings(LogSettings& settings) {
  try {
    ReadSettings(settings);
  } catch (const std::exception& error) {
    settings.obstacle = DescribeFailure(error.what());
  } catch (...) {
    settings.obstacle = DescribeFailure("an unknown exception");
  }
}

void OpenLog(LogSettings& settings) {
  if (settings.path.empty()) {
    settings.path = esd::GetUpdaterPrefsFile(esd::kUpdaterLogName).value_or("");
  }
  esd::InitUpdaterLog(settings.path, settings.level, "", kLogComponent, kLogSubComponent);
  esd::UpdaterLogNullable(esd::kBannerLevel, "Application Version: ", esd::ProgramVersion());
  esd::UpdaterLogValue(esd::kMessageLevel, "cmdline option: -logFile", settings.path);
  esd::UpdaterLogInt(esd::kMessageLevel, "cmdline option: -logLevel", settings.level);
}

}  // namespace

bool SetUpStartupLogging() {
  LogSettings settings;
  try {
    FindSettings(settings);
    if (settings.level > 0) {
      OpenLog(settings);
      settings.obstacle = esd::IsUpdaterLogWritten() ? "" : DescribeLogFile(settings.path);
    }
    if (!settings.obstacle.empty()) ReportNoLog(settings.obstacle);
  } catch (...) {
    platform::WriteToStandardError("wakerly: no memory for the log\n");
  }
  return true;
}

}  // namespace wakerly
