// `wakerlyctl lock`: who holds which lock; removes one that was left behind.
#ifndef CTL_LOCK_H_
#define CTL_LOCK_H_

#include "ctl/answer.h"

namespace ctl {

/// What the command line says.
struct LockOptions {
  bool clear = false;
  bool yes = false;      ///< no question before a removal
  bool as_json = false;  ///< then nothing is asked
};

/// The locks of both preference files, the runs that live, and the lock of the log; it changes
/// nothing.
Answer ShowLocks();

/// Removes each lock of a preference file that was left behind. Without `yes` it asks before, on
/// standard input and output where both are terminals; elsewhere no lock goes.
Answer ClearLocks(const LockOptions& options);

}  // namespace ctl

#endif  // CTL_LOCK_H_
