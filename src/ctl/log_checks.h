// Whether the log of a run comes out, and as it is meant to.
#ifndef CTL_LOG_CHECKS_H_
#define CTL_LOG_CHECKS_H_

#include <optional>
#include <string>

#include "ctl/check.h"
#include "ctl/forecast.h"

namespace ctl {

/// Adds what is found about the log `log` of a run whose preferences are in the file `preferences`.
void CheckLog(Checks& checks, const Forecast::Log& log,
              const std::optional<std::string>& preferences);

}  // namespace ctl

#endif  // CTL_LOG_CHECKS_H_
