// Removing a lock that a killed process left behind, and no other.
#ifndef CTL_LOCK_CLEARING_H_
#define CTL_LOCK_CLEARING_H_

#include <functional>
#include <string>

#include "ctl/forecast.h"
#include "ctl/lock_look.h"

namespace ctl {

/// Whether to go on; it is given a question.
using Confirmation = std::function<bool(const std::string& question)>;

/// Removes `lock` when it is held, at least two seconds old, and no run lives that could hold it,
/// once `confirm` agreed; where the system tells no age, when it still stands two seconds later.
/// All of that must hold after the question as well, for the same lock. Tells what came of it.
Finding ClearLock(const LockLook& lock, const Confirmation& confirm);

/// Whether `id` says that a lock stays which should have been removed.
bool IsRefusal(Id id);

}  // namespace ctl

#endif  // CTL_LOCK_CLEARING_H_
