#include "ctl/log_checks.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <vector>

#include "ctl/remedy.h"
#include "esd/log/updater_log.h"
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

std::optional<std::string> MakeWritable(const std::string& path) {
  const FileType type = platform::TypeOf(path);
  if (type == FileType::kFolder || type == FileType::kOther) return SetAside(path);
  if (type == FileType::kRegular) return GiveToUser(path, "rw");
  const std::string folder = esd::GetParentFolder(path);
  if (folder.empty()) return std::nullopt;
  if (platform::TypeOf(folder) == FileType::kFolder) return GiveToUser(folder, "rwx");
  return "mkdir -p " + ShellWord(folder);
}

Check LookAtLog(const Forecast::Log& log) {
  const auto& [id, why] = log.finding;
  switch (id) {
    case Id::kLogWritten:
      return {Grade::kOk, id, why + " It is " + *log.path + "."};
    case Id::kLogOff:
      return {Grade::kNote, id, why};
    case Id::kLogPreferencesLocked:
      return {Grade::kBad, id, why, "wakerlyctl lock --clear"};
    case Id::kLogUnwritable:
      return {Grade::kBad, id, why, MakeWritable(*log.path)};
    case Id::kLogLockDenied:
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

// What is named like a switch where switches are looked for, or beside the log. `active` is the one
// that counts.
void CheckIdleSwitches(Checks& checks, const std::string& log,
                       const std::optional<std::string>& active) {
  const std::string beside = welko::WithoutLastPathComponent(log);
  const std::string logs = welko::GetConsoleUserLogsFolder().value_or(beside);
  std::vector<std::string> folders = {logs};
  if (beside != logs) folders.push_back(beside);
  const std::string own_name = welko::WithoutPathExtension(welko::LastPathComponent(log));
  const std::string default_name = welko::WithoutPathExtension(welko::kDefaultLogName);
  std::vector<std::string> names = {default_name, "quib"};
  if (own_name != default_name) names.push_back(own_name);
  for (const std::string& folder : folders) {
    for (const std::string& name : names) {
      for (const char* extension : {".trace", ".debug"}) {
        std::string path = folder;
        welko::AppendPathComponent(path, name + extension);
        const bool keeps_backups = path == beside + "/quib.trace" && welko::KeepsOldLogs(beside);
        if (!welko::PathExists(path) || path == active || keeps_backups) continue;
        checks.push_back({Grade::kNote, Id::kLogSwitchWithoutEffect,
                          path +
                              " has no effect: the one switch that counts is the first file of "
                              "the right name in " +
                              logs + "."});
      }
    }
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
  CheckIdleSwitches(checks, log, active);
  const std::string folder = welko::WithoutLastPathComponent(log);
  if (welko::KeepsOldLogs(folder)) {
    checks.push_back({Grade::kNote, Id::kLogKeepsBackups,
                      folder + "/quib.trace keeps all backups of the log.",
                      Remove(folder + "/quib.trace")});
  }
}

void CheckSize(Checks& checks, const Forecast::Log& log) {
  const std::int64_t size = platform::SizeOf(*log.path).value_or(0);
  if (!log.level || size < esd::UpdaterLogSizeLimit(*log.level)) return;
  checks.push_back({Grade::kNote, Id::kLogRollsOver,
                    *log.path + " has " + std::to_string(size) +
                        " bytes: the next run moves its text to a backup beside it, of which the "
                        "newest two stay."});
}

// A roll-over takes everything in the log's folder that begins with its name for a backup.
void CheckNeighbour(Checks& checks, const std::string& log,
                    const std::optional<std::string>& preferences) {
  const std::string base = welko::WithoutPathExtension(log);
  if (!preferences || *preferences == log || !preferences->starts_with(base)) return;
  checks.push_back({Grade::kBad, Id::kLogEndangersPreferences,
                    "When " + log + " rolls over, " + *preferences +
                        " goes as if it were a backup of it, since the names begin alike. Name "
                        "another file in StartupLogFile."});
}

bool Lives(pid_t process) { return process > 0 && (kill(process, 0) == 0 || errno == EPERM); }

// The set once nobody just writes a line, or as it is when that does not end.
std::optional<LogFileLock::Look> LookAtQuietLock(const std::string& path) {
  constexpr int kLooks = 100;
  constexpr useconds_t kPause = 10'000;
  std::optional<LogFileLock::Look> look;
  for (int turn = 0; turn < kLooks; ++turn) {
    if (turn != 0) usleep(kPause);
    look = LogFileLock::LookAt(path);
    // A set that nobody has used is made ready by the next run.
    if (!look || look->is_free || look->attached == 0) return std::nullopt;
  }
  return look;
}

void CheckLock(Checks& checks, const std::string& path) {
  const std::optional<LogFileLock::Look> look = LookAtQuietLock(path);
  if (!look) return;
  if (Lives(look->last)) {
    checks.push_back({Grade::kNote, Id::kLogLockInUse,
                      "Process " + std::to_string(look->last) + " holds the lock of " + path +
                          ": others wait for it."});
    return;
  }
  checks.push_back({Grade::kBad, Id::kLogLockStuck,
                    "The lock of " + path +
                        " is taken, and no living process holds it. Every run "
                        "waits for it without an end.",
                    RemoveLock(path)});
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
