// A lock on a named resource, in practice a preference file, that excludes other processes.
//
// The lock is held while a POSIX named semaphore exists, whose name is the Base64 text of the MD5
// digest of the resource's name. A process that is killed while it holds the lock leaves the
// semaphore behind.
#ifndef ESD_PREFS_RESOURCE_LOCKER_H_
#define ESD_PREFS_RESOURCE_LOCKER_H_

#include <memory>
#include <string>

#include "esd/prefs/lock_policy.h"

namespace esd {

/// Two objects on the same resource exclude each other, also within a process. One thread at a time
/// uses an object. From a successful Lock to the next Unlock, the signals of HeldSignals are held
/// back from that thread.
class ResourceLocker : public LockPolicyInterface {
 public:
  /// Takes no lock yet. `timeout` is kept and not used.
  ResourceLocker(const std::string& resourceName, unsigned long timeout);
  /// Gives the lock back when it is held.
  ~ResourceLocker() override;

  /// Tries for about a second. Throws resource_lock_fail when this object holds the lock already.
  bool Lock() override;
  /// False when there is no such lock to remove; this object then still counts as holding. Without
  /// `force`, throws no_resource_lock when this object does not hold it.
  bool Unlock(bool force) override;
  bool IsLocked() override;

  /// The name of the semaphore that is the lock on `resource`, as the system takes it.
  static std::string SemaphoreOf(const std::string& resource);
  /// Whether the semaphore that is the lock on `resource` stands at this moment, whoever made it.
  static bool IsTaken(const std::string& resource);

 private:
  class ResourceLockerPlat;
  std::unique_ptr<ResourceLockerPlat> plat_;
};

}  // namespace esd

#endif  // ESD_PREFS_RESOURCE_LOCKER_H_
