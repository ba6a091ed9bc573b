#include "esd/prefs/prefs_lock.h"

#include "esd/prefs/prefs_writer.h"

namespace esd {

PrefsLock::PrefsLock(PrefsWriter& prefs)
    : policy_(prefs.lock_policy()), took_(policy_ != nullptr && !policy_->IsLocked()), held_(true) {
  if (!took_) return;
  try {
    prefs.LockPrefs();
  } catch (...) {
    if (policy_->IsLocked()) policy_->Unlock(false);
    throw;
  }
  took_ = held_ = policy_->IsLocked();
}

PrefsLock::~PrefsLock() { Release(); }

bool PrefsLock::Release() {
  if (!took_) return true;
  took_ = false;
  // Whoever gave the lock back meanwhile has done this object's work.
  return !policy_->IsLocked() || policy_->Unlock(false);
}

}  // namespace esd
