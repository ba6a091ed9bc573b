// The lock of a preference store, held for a scope.
#ifndef ESD_PREFS_PREFS_LOCK_H_
#define ESD_PREFS_PREFS_LOCK_H_

#include "esd/prefs/lock_policy.h"

namespace esd {

class PrefsWriter;

/// Takes a store's lock, with a document brought up to date, unless it is held already, and gives
/// back what it took. A store without a lock policy needs none.
class PrefsLock {
 public:
  /// Tries once to take the lock of `prefs`, whose lock policy must outlive this object; held()
  /// tells the outcome. What the update of the document throws reaches the caller, with nothing
  /// taken.
  explicit PrefsLock(PrefsWriter& prefs);
  ~PrefsLock();
  PrefsLock(const PrefsLock&) = delete;
  PrefsLock& operator=(const PrefsLock&) = delete;

  /// Whether the store may be used: its lock is held, or it has none.
  bool held() const { return held_; }
  /// Whether it was this object that took the lock.
  bool took() const { return took_; }
  /// Gives back what this object took, before its end. False when that fails.
  bool Release();
  /// Leaves the lock held beyond this object's end.
  void Keep() { took_ = false; }

 private:
  LockPolicyInterface* const policy_;
  bool took_;
  bool held_;
};

}  // namespace esd

#endif  // ESD_PREFS_PREFS_LOCK_H_
