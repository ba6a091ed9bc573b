#include "ctl/lock.h"

#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <utility>
#include <vector>

#include "ctl/iso_time.h"
#include "ctl/lock_clearing.h"
#include "ctl/lock_look.h"
#include "ctl/prefs_view.h"
#include "ctl/settings.h"
#include "ctl/user_name.h"
#include "ctl/user_settings.h"
#include "esd/prefs/updater_folders.h"
#include "welko/log_file_lock.h"

namespace ctl {
namespace {

struct LogLock {
  std::optional<std::string> path;  ///< of the log; nothing where there is no folder for it
  std::optional<welko::LogFileLock::Look> look;
  bool is_denied = false;  ///< whether there is a set, which this user may not use
};

struct State {
  std::vector<LockLook> locks;
  std::vector<platform::Process> runs;
  LogLock log;
};

LogLock LookAtLogLock(const std::optional<std::string>& path) {
  LogLock log{path, std::nullopt, false};
  if (!path) return log;
  log.look = welko::LogFileLock::LookAt(*path);
  log.is_denied = !log.look && errno == EACCES;
  return log;
}

State LookAround() {
  const PrefsView file(esd::GetUpdaterPrefsFile(esd::kPrefsFileName));
  const std::optional<std::string> admin_path = esd::GetAdminPrefsFile();
  UserSettings user(file);
  return {{LookAtLock(LockedFile::kUser, file.path(), user.is_locked),
           LookAtLock(LockedFile::kAdministrator, admin_path,
                      admin_path && IsPrefsLockHeld(*admin_path))},
          FindRuns(),
          LookAtLogLock(FindLogFile(user))};
}

Finding FindingOf(const LockLook& lock) {
  if (!lock.path) return {Id::kLockNoFolder, "There is no folder for the file."};
  if (!lock.is_held) return {Id::kLockFree, "There is no lock on " + *lock.path + "."};
  return {Id::kLockHeld, *lock.path + " is locked, by a process or by one that was killed."};
}

Value ToValue(const LockLook& lock, const Finding& finding) {
  const auto& origin = lock.origin;
  return Value::Object{{"file", NameOf(lock.file)},
                       {"path", lock.path},
                       {"semaphore", lock.path ? Value(lock.semaphore) : Value()},
                       {"held", lock.is_held},
                       {"since", origin ? Value(ToIsoTime(origin->seconds)) : Value()},
                       {"owner", origin ? Value(UserName(origin->uid)) : Value()},
                       {"id", NameOf(finding.id)},
                       {"why", finding.why}};
}

Value ToValue(const std::vector<platform::Process>& runs) {
  Value::Array list;
  for (const platform::Process& run : runs) {
    list.push_back(Value::Object{
        {"process", run.id}, {"user", UserName(run.uid)}, {"executable", run.executable}});
  }
  return list;
}

const char* StateName(const LogLock& log) {
  if (log.is_denied) return "denied";
  if (!log.look) return "none";
  return log.look->is_free ? "free" : "held";
}

Value ToValue(const LogLock& log) {
  return Value::Object{{"path", ShownLogPath(log.path)},
                       {"state", StateName(log)},
                       {"attached", log.look ? Value(log.look->attached) : Value()},
                       {"last_process", log.look ? Value(std::int64_t{log.look->last}) : Value()}};
}

Value ToValue(const State& state, const std::vector<Finding>& findings) {
  Value::Array locks;
  for (std::size_t i = 0; i < state.locks.size(); ++i) {
    locks.push_back(ToValue(state.locks[i], findings[i]));
  }
  return WithVersion({{"locks", std::move(locks)},
                      {"runs", ToValue(state.runs)},
                      {"log_lock", ToValue(state.log)}});
}

void AddLock(Page& page, const LockLook& lock, const std::vector<platform::Process>& runs) {
  const std::string since = DescribeOrigin(lock);
  std::string says = lock.is_held ? "held" : lock.path ? "free" : "no folder for the file";
  if (!since.empty()) says += " " + since;
  page.AddRow(NameOf(lock.file), lock.is_held ? Tone::kBad : Tone::kGood, says);
  if (!lock.path) return;
  page.AddDetail(*lock.path);
  page.AddDetail("semaphore " + lock.semaphore);
  if (!lock.is_held) return;
  page.AddDetail(
      FindHolders(lock, runs).empty()
          ? std::string("No run of wakerly lives that could hold it. Unless the updater runs, "
                        "remove it with: ") +
                ClearingCommand(lock)
          : "A run of wakerly that lives may hold it.");
}

std::string DescribeState(const LogLock& log) {
  if (!log.path) return "no folder for the log";
  if (log.is_denied) return "the semaphore set belongs to another user, and may not be used";
  if (!log.look) return "none: the log has no semaphore set";
  return std::string(log.look->is_free ? "free" : "held") + ", " +
         "attached processes: " + std::to_string(log.look->attached) + ", used last by process " +
         std::to_string(log.look->last);
}

Page ToPage(const State& state) {
  Page page;
  page.AddTitle("The locks of " + UserName(geteuid()) + ":");
  for (const LockLook& lock : state.locks) AddLock(page, lock, state.runs);
  page.AddRow("log", state.log.is_denied ? Tone::kBad : Tone::kGood, DescribeState(state.log));
  if (state.log.path) page.AddDetail(ShownLogPath(*state.log.path));
  page.AddRow("runs", Tone::kPlain, state.runs.empty() ? "none of wakerly" : "");
  for (const platform::Process& run : state.runs) {
    page.AddDetail(Describe(run) + ": " + run.executable);
  }
  return page;
}

bool Ask(const std::string& question) {
  std::string answer;
  return WriteOutput(Printable(question) + " [y/N] ") && std::getline(std::cin, answer) &&
         (answer == "y" || answer == "Y" || answer == "yes");
}

Confirmation ChooseConfirmation(const LockOptions& options) {
  if (options.yes) return [](const std::string&) { return true; };
  const bool can_ask = !options.as_json && isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
  if (can_ask) return Ask;
  return [](const std::string&) { return false; };
}

}  // namespace

Answer ShowLocks() {
  const State state = LookAround();
  std::vector<Finding> findings;
  for (const LockLook& lock : state.locks) findings.push_back(FindingOf(lock));
  return {ToPage(state), ToValue(state, findings), kDone};
}

Answer ClearLocks(const LockOptions& options) {
  const Confirmation confirm = ChooseConfirmation(options);
  const State state = LookAround();
  std::vector<Finding> findings;
  Answer answer;
  for (const LockLook& lock : state.locks) {
    const Finding finding = ClearLock(lock, confirm);
    findings.push_back(finding);
    if (IsRefusal(finding.id)) {
      answer.status = kRefused;
      answer.complaint += (answer.complaint.empty() ? "" : " ") + finding.why;
    } else {
      answer.page.AddRow(NameOf(lock.file), Tone::kGood, finding.why);
    }
  }
  answer.json = ToValue(state, findings);
  return answer;
}

}  // namespace ctl
