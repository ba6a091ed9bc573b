// The client library loaded for a trial, in a process of its own: its code may do anything.
#ifndef CTL_LIBRARY_TRIAL_H_
#define CTL_LIBRARY_TRIAL_H_

#include <string>

#include "ctl/check.h"

namespace ctl {

/// The hidden command of this program that does the child's part.
inline constexpr char kTrialCommand[] = "try-library";

/// How long the library is given to load.
inline constexpr int kTrialSeconds = 10;

/// Starts this program's own executable with kTrialCommand, and tells how the library `path` loads.
Check TryLibrary(const std::string& path);

/// The child's part: loads the library `path` as a run does, and writes to kAnswerDescriptor. Does
/// not return; the process is ended when the library takes longer than it is given.
[[noreturn]] void LoadForTrial(const std::string& path);

}  // namespace ctl

#endif  // CTL_LIBRARY_TRIAL_H_
