#include "ctl/lock_look.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>

#include "ctl/iso_time.h"
#include "ctl/remedy.h"
#include "ctl/user_name.h"
#include "esd/prefs/resource_locker.h"

namespace ctl {

using platform::Process;

const char* NameOf(LockedFile file) {
  return file == LockedFile::kUser ? "preferences" : "administrator-preferences";
}

LockLook LookAtLock(LockedFile file, const std::optional<std::string>& path, bool is_held) {
  LockLook lock{file, path, "", is_held, std::nullopt};
  if (path) lock.semaphore = esd::ResourceLocker::SemaphoreOf(*path);
  if (is_held) lock.origin = platform::FindSemaphoreOrigin(lock.semaphore);
  return lock;
}

std::string DescribeOrigin(const LockLook& lock) {
  if (!lock.origin) return "";
  return "since " + ToIsoTime(lock.origin->seconds) + ", made by " + UserName(lock.origin->uid);
}

std::string ClearingCommand(const LockLook& lock) {
  const bool is_others = lock.origin && lock.origin->uid != geteuid();
  // With this user's home folder, root would look as this user.
  const bool takes_root = is_others && lock.file == LockedFile::kAdministrator && geteuid() != 0;
  return (takes_root ? "sudo -H " : "") + std::string(kClearLock);
}

std::vector<Process> FindRuns() { return platform::FindProcesses("wakerly"); }

std::vector<Process> FindHolders(const LockLook& lock, const std::vector<Process>& runs) {
  std::vector<Process> found;
  std::copy_if(runs.begin(), runs.end(), std::back_inserter(found), [&](const Process& run) {
    const bool may_lock =
        lock.file == LockedFile::kAdministrator || run.uid == 0 || run.uid == geteuid();
    return may_lock && platform::MayHaveSemaphoreOpen(run.id, lock.semaphore);
  });
  return found;
}

std::string Describe(const Process& run) {
  return "process " + std::to_string(run.id) + " of " + UserName(run.uid);
}

}  // namespace ctl
