// Whether the programs that a run hands over to are there, and fit this machine.
#ifndef CTL_PROGRAM_FORECAST_H_
#define CTL_PROGRAM_FORECAST_H_

#include <optional>
#include <string>

#include "ctl/forecast.h"

namespace ctl {

/// The notifier whose executable is `path`, nothing where the run finds no path; `is_due` is
/// whether the run goes on to start it.
Forecast::Notifier ForecastNotifier(const std::optional<std::string>& path, bool is_due);

/// The client library, whether or not the run reaches it.
Forecast::Library ForecastLibrary();

}  // namespace ctl

#endif  // CTL_PROGRAM_FORECAST_H_
