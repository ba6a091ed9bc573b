// The locks of the preference files as they stand, and the runs that could hold one.
#ifndef CTL_LOCK_LOOK_H_
#define CTL_LOCK_LOOK_H_

#include <optional>
#include <string>
#include <vector>

#include "platform/processes.h"
#include "platform/semaphore_name.h"

namespace ctl {

/// Which preference file a lock guards.
enum class LockedFile { kUser, kAdministrator };

/// Its name for scripts: "preferences" or "administrator-preferences".
const char* NameOf(LockedFile file);

/// A preference file's lock at one moment.
struct LockLook {
  LockedFile file;
  std::optional<std::string> path;  ///< of the file; nothing where there is no folder for it
  std::string semaphore;            ///< the name by which the system knows the lock
  bool is_held = false;
  std::optional<platform::SemaphoreOrigin> origin;  ///< where it is held and the system tells
};

/// The lock on `file`, which has the path `path`, once it was seen whether it is held.
LockLook LookAtLock(LockedFile file, const std::optional<std::string>& path, bool is_held);

/// "since 2026-11-22T09:30:00+01:00, made by ann", as far as the system tells; else empty.
std::string DescribeOrigin(const LockLook& lock);

/// The command that removes `lock` where it was left behind: root's own for an administrator's that
/// another user made.
std::string ClearingCommand(const LockLook& lock);

/// The living runs of wakerly.
std::vector<platform::Process> FindRuns();

/// Those of `runs` that could hold `lock`: of the user's file a run as the user or as root, of the
/// administrator's any, unless the system tells that it has not the semaphore.
std::vector<platform::Process> FindHolders(const LockLook& lock,
                                           const std::vector<platform::Process>& runs);

/// "process 123 of ann".
std::string Describe(const platform::Process& run);

}  // namespace ctl

#endif  // CTL_LOCK_LOOK_H_
