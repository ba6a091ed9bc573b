// `wakerlyctl prefs`: every preference with its value, and where that comes from.
#ifndef CTL_PREFS_H_
#define CTL_PREFS_H_

#include <optional>
#include <string>

#include "ctl/answer.h"

namespace ctl {

/// All keys of both files, or `key` alone in each file that knows it or holds it; kProblem where
/// none does. Waits about a second where the user's file is locked.
Answer ShowPrefs(const std::optional<std::string>& key);

}  // namespace ctl

#endif  // CTL_PREFS_H_
