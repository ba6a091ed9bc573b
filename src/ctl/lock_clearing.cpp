#include "ctl/lock_clearing.h"

#include <optional>
#include <vector>

#include "ctl/prefs_view.h"
#include "esd/prefs/resource_locker.h"
#include "welko/log_line.h"

namespace ctl {
namespace {

constexpr std::int64_t kLeastMilliseconds = 2000;

// Whether it has stood for the time that no run holds a lock. One whose time lies ahead tells none.
bool IsOldEnough(const LockLook& lock) {
  const std::int64_t now = welko::NowMilliseconds();
  if (lock.origin && lock.origin->seconds * 1000 <= now) {
    // It may have been made at the end of its second.
    return now - (lock.origin->seconds + 1) * 1000 >= kLeastMilliseconds;
  }
  // Each look lasts a second.
  return IsPrefsLockHeld(*lock.path) && IsPrefsLockHeld(*lock.path);
}

// Why `lock` must stay; nothing where it may go.
std::optional<Finding> FindObstacle(const LockLook& lock) {
  const bool is_old = IsOldEnough(lock);
  if (!esd::ResourceLocker::IsTaken(*lock.path)) {
    return Finding{Id::kLockGone, *lock.path + " is no longer locked."};
  }
  if (platform::FindSemaphoreOrigin(lock.semaphore) != lock.origin) {
    return Finding{Id::kLockReplaced, *lock.path + " was let go and locked again just now."};
  }
  const std::vector<platform::Process> holders = FindHolders(lock, FindRuns());
  if (!holders.empty()) {
    return Finding{Id::kLockInUse,
                   *lock.path + " may be locked by wakerly, " + Describe(holders.front()) + "."};
  }
  if (is_old) return std::nullopt;
  return Finding{Id::kLockTooYoung,
                 *lock.path + " was locked less than two seconds ago; look again."};
}

Finding Remove(const LockLook& lock, const std::string& origin) {
  if (esd::ResourceLocker(*lock.path, 0).Unlock(true)) {
    return {Id::kLockRemoved, "The lock on " + *lock.path + origin + " was removed."};
  }
  if (!esd::ResourceLocker::IsTaken(*lock.path)) {
    return {Id::kLockGone, *lock.path + " is no longer locked."};
  }
  return {Id::kLockNotRemovable,
          "The system refuses to remove the lock on " + *lock.path + origin + "."};
}

}  // namespace

Finding ClearLock(const LockLook& lock, const Confirmation& confirm) {
  if (!lock.path) return {Id::kLockNoFolder, "There is no folder for the file."};
  if (!lock.is_held) return {Id::kLockFree, "There is no lock on " + *lock.path + "."};
  const std::string since = DescribeOrigin(lock);
  const std::string origin = since.empty() ? "" : " (" + since + ")";
  std::optional<Finding> obstacle = FindObstacle(lock);
  if (obstacle) return *obstacle;
  if (!confirm("Remove the lock on " + *lock.path + origin + "?")) {
    return {Id::kLockNotConfirmed,
            "The lock on " + *lock.path + " stays: nobody said yes, on a terminal or by --yes."};
  }
  obstacle = FindObstacle(lock);
  return obstacle ? *obstacle : Remove(lock, origin);
}

bool IsRefusal(Id id) {
  return id == Id::kLockInUse || id == Id::kLockTooYoung || id == Id::kLockNotConfirmed ||
         id == Id::kLockReplaced || id == Id::kLockNotRemovable;
}

}  // namespace ctl
