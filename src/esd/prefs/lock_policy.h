// What a preference store needs of the lock that guards its file.
#ifndef ESD_PREFS_LOCK_POLICY_H_
#define ESD_PREFS_LOCK_POLICY_H_

namespace esd {

/// A lock between processes, for one file. A store uses it and does not own it.
class LockPolicyInterface {
 public:
  LockPolicyInterface() = default;
  LockPolicyInterface(const LockPolicyInterface&) = delete;
  LockPolicyInterface& operator=(const LockPolicyInterface&) = delete;

  /// Tries to take the lock; true when this object holds it now.
  virtual bool Lock() = 0;
  /// Gives the lock back; true on success. With `force` also one that this object does not hold.
  virtual bool Unlock(bool force) = 0;
  /// Whether this object holds the lock now.
  virtual bool IsLocked() = 0;
  virtual ~LockPolicyInterface() = default;
};

}  // namespace esd

#endif  // ESD_PREFS_LOCK_POLICY_H_
