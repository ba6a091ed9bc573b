#include "ctl/log_checks.h"

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <set>
#include <vector>

#include "ctl/held_log_lock.h"
#include "ctl/remedy.h"
#include "esd/log/updater_log.h"
#include "esd/prefs/updater_folders.h"
#include "esd/util/path.h"
#include "platform/file_type.h"
#include "welko/library_logs.h"
#include "welko/log_file_lock.h"
#include "welko/log_switches.h"
#include "welko/log_target_base.h"
#include "welko/path.h"

namespace ctl {
namespace {

using platform::FileType;
using welko::LogFileLock;

// Whoever uses the set makes it anew.
std::string RemoveLock(const std::string& path) {
  char key[16];
  std::snprintf(key, sizeof key, "0x%08x", static_cast<unsigned>(LogFileLock::KeyOf(path)));
  return Sudo() + "ipcrm -S " + key;
}

bool IsInUpdaterFolder(const std::string& path) {
  std::string folder;
  return esd::GetUpdaterPrefsFolder(folder) && esd::GetParentFolder(path) == folder;
}

std::optional<std::string> MakeWritable(const std::string& path) {
  if (!IsInHome(path)) return std::nullopt;
  const FileType type = platform::TypeOf(path);
  if (type == FileType::kFolder || type == FileType::kOther) {
    // Elsewhere it is perhaps what others need, such as the home folder.
    return IsInUpdaterFolder(path) ? std::optional(SetAside(path)) : std::nullopt;
  }
  if (type == FileType::kRegular) return GiveToUser(path, "rw");
  const std::string folder = esd::GetParentFolder(path);
  if (folder.empty()) return std::nullopt;
  if (platform::TypeOf(folder) == FileType::kFolder) return GiveToUser(folder, "rwx");
  return "mkdir -p " + ShellWord(folder);
}

constexpr char kUsualLevel[] = " LogLevel = 2 is the usual one.";

Check LookAtLog(const Forecast::Log& log) {
  const auto& [id, why] = log.finding;
  switch (id) {
    case Id::kLogWritten:
      return {Grade::kOk, id, *log.path + ": " + why};
    case Id::kLogOff:
      return {Grade::kNote, id, why + kUsualLevel};
    case Id::kLogLevelUnreadable:
      return {Grade::kBad, id, why + kUsualLevel};
    case Id::kLogPreferencesLocked:
      return {Grade::kBad, id, why, kClearLock};
    case Id::kLogUnwritable:
      return {Grade::kBad, id, why + " Name another file in StartupLogFile, or make it writable.",
              MakeWritable(*log.path)};
    case Id::kLogDiskFull:
      return {Grade::kBad, id, why + " Make room there."};
    case Id::kLogLockDenied:
    case Id::kLogLockStuck:
      return {Grade::kBad, id, why, RemoveLock(*log.path)};
    default:
      return {Grade::kBad, id, why};
  }
}

void CheckLevel(Checks& checks, const Forecast::Log& log) {
  constexpr int kHighestLevel = 10;
  if (log.level.value_or(0) <= kHighestLevel) return;
  checks.push_back({Grade::kNote, Id::kLogLevelBeyondScale,
                    "LogLevel is " + std::to_string(*log.level) +
                        ", which logs less than 3 does: the scale ends at 10, and 3 shows all that "
                        "a run has to say."});
}

// Each path that is named like a switch, below the folder where switches count and beside the log.
std::vector<std::string> SwitchPaths(const std::string& log, const std::string& logs) {
  const std::string beside = welko::WithoutLastPathComponent(log);
  std::set<std::string> bases;
  for (const std::string& folder : {logs, beside}) {
    const std::string own = welko::LastPathComponent(log);
    for (const std::string& name :
         {own, std::string(welko::kDefaultLogName), std::string(welko::kCommonSwitch)}) {
      std::string base = folder;
      welko::AppendPathComponent(base, welko::WithoutPathExtension(name));
      bases.insert(base);
    }
  }
  std::vector<std::string> paths;
  for (const std::string& base : bases) {
    for (const char* extension : {".trace", ".debug"}) paths.push_back(base + extension);
  }
  return paths;
}

// `active` is the switch that counts, and `keeper` the file that keeps backups.
void CheckIdleSwitches(Checks& checks, const std::string& log,
                       const std::optional<std::string>& active,
                       const std::optional<std::string>& keeper) {
  const std::optional<std::string> logs = welko::GetConsoleUserLogsFolder();
  for (const std::string& path : SwitchPaths(log, logs.value_or(""))) {
    if (!welko::PathExists(path) || path == active || path == keeper) continue;
    checks.push_back({Grade::kNote, Id::kLogSwitchWithoutEffect,
                      path + " has no effect: the first file of the right name in " +
                          logs.value_or("the user's logs folder") + " counts, and no other."});
  }
}

void CheckSwitches(Checks& checks, const std::string& log) {
  const std::optional<std::string> active = welko::FindLogSwitch(welko::kDefaultLogName);
  if (active) {
    checks.push_back({Grade::kNote, Id::kLogSwitched,
                      *active + " turns the log up: more lines at level 5 and above, and a larger "
                                "file before it rolls over.",
                      Remove(*active)});
  }
  std::optional<std::string> keeper;
  const std::string folder = welko::WithoutLastPathComponent(log);
  if (welko::KeepsOldLogs(folder)) {
    keeper = folder + "/" + welko::kCommonSwitch + ".trace";
    checks.push_back({Grade::kNote, Id::kLogKeepsBackups,
                      *keeper + " keeps all backups of the log.", Remove(*keeper)});
  }
  CheckIdleSwitches(checks, log, active, keeper);
}

void CheckSize(Checks& checks, const Forecast::Log& log) {
  const std::int64_t size = platform::SizeOf(*log.path).value_or(0);
  if (log.level.value_or(0) < 1 || size < esd::UpdaterLogSizeLimit(*log.level)) return;
  checks.push_back({Grade::kNote, Id::kLogRollsOver,
                    *log.path + " has " + std::to_string(size) +
                        " bytes: the next run moves its text to a backup beside it, of which the "
                        "newest two stay."});
}

// The preference file is no log, and a roll-over takes everything in the log's folder that begins
// with its name for a backup.
void CheckNeighbour(Checks& checks, const std::string& log,
                    const std::optional<std::string>& preferences) {
  if (preferences == log) {
    checks.push_back({Grade::kBad, Id::kLogEndangersPreferences,
                      log + " is the preference file, which the lines of a log make malformed. "
                            "Name another file in StartupLogFile."});
    return;
  }
  const std::string base = welko::WithoutPathExtension(log);
  if (!preferences || !preferences->starts_with(base)) return;
  checks.push_back({Grade::kBad, Id::kLogEndangersPreferences,
                    "When " + log + " rolls over, " + *preferences +
                        " goes as if it were a backup of it, since the names begin alike. Name "
                        "another file in StartupLogFile."});
}

void CheckLock(Checks& checks, const std::string& path) {
  const std::optional<HeldLogLock> lock = FindHeldLogLock(path);
  if (!lock || lock->is_stuck) return;
  checks.push_back({Grade::kNote, Id::kLogLockInUse,
                    "Process " + std::to_string(lock->process) + " holds the lock of " + path +
                        ": others wait for it."});
}

}  // namespace

void CheckLog(Checks& checks, const Forecast::Log& log,
              const std::optional<std::string>& preferences) {
  checks.push_back(LookAtLog(log));
  if (!log.path) return;
  CheckLevel(checks, log);
  CheckNeighbour(checks, *log.path, preferences);
  CheckSwitches(checks, *log.path);
  CheckSize(checks, log);
  CheckLock(checks, *log.path);
}

}  // namespace ctl
