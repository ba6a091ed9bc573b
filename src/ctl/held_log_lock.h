// The lock of a log while somebody holds it.
#ifndef CTL_HELD_LOG_LOCK_H_
#define CTL_HELD_LOG_LOCK_H_

#include <sys/types.h>

#include <optional>
#include <string>

namespace ctl {

/// A lock that is held for longer than a line takes to write.
struct HeldLogLock {
  pid_t process;          ///< the one that took it last
  bool is_stuck = false;  ///< whether that one lives no more: a run waits without an end
};

/// Looks at the lock of the log `path` for about a second. Nothing where it is free once, or there
/// is none.
std::optional<HeldLogLock> FindHeldLogLock(const std::string& path);

}  // namespace ctl

#endif  // CTL_HELD_LOG_LOCK_H_
