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

/// Looks at the lock of `file`, which has the path `path`. Waits about a second where it is held.
LockLook LookAtLock(LockedFile file, const std::optional<std::string>& path);

/// "since 2026-11-22T09:30:00+01:00, made by ann", as far as the system tells; else empty.
std::string DescribeOrigin(const LockLook& lock);

/// The living runs of wakerly.
std::vector<platform::Process> FindRuns();

/// Those of `runs` that could hold the lock on `file`: that of the user's is taken by runs as the
/// user and as root, the administrator's by any.
std::vector<platform::Process> RunsThatLock(LockedFile file,
                                            const std::vector<platform::Process>& runs);

/// "process 123 of ann".
std::string Describe(const platform::Process& run);

}  // namespace ctl

#endif  // CTL_LOCK_LOOK_H_
