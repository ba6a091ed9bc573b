// One thing that the doctor looked at, and how it is.
#ifndef CTL_CHECK_H_
#define CTL_CHECK_H_

#include <optional>
#include <string>
#include <vector>

#include "ctl/identifiers.h"

namespace ctl {

/// How a thing is, the better first: "ok", "note" or "problem".
enum class Grade { kOk, kNote, kBad };

/// What was found. A sentence tells it; the remedy is a command for a POSIX shell, nothing where
/// there is nothing to do or no command does it.
struct Check {
  Grade grade;
  Id id;
  std::string finding;
  std::optional<std::string> remedy = std::nullopt;
};

/// In the order of a run.
using Checks = std::vector<Check>;

}  // namespace ctl

#endif  // CTL_CHECK_H_
