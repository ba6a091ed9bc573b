// Whether a preference file is as the programs that share it want it.
#ifndef CTL_PREFS_CHECKS_H_
#define CTL_PREFS_CHECKS_H_

#include "ctl/check.h"
#include "ctl/lock_look.h"
#include "ctl/prefs_view.h"

namespace ctl {

/// Adds what is found about the file `view`, which is the one that `file` names.
void CheckPrefs(Checks& checks, LockedFile file, const PrefsView& view);

}  // namespace ctl

#endif  // CTL_PREFS_CHECKS_H_
