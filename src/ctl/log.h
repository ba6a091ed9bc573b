// `wakerlyctl log`: the lines of the last runs, run by run, and what came of each.
#ifndef CTL_LOG_H_
#define CTL_LOG_H_

#include <cstddef>
#include <string>

#include "ctl/answer.h"
#include "ctl/log_runs.h"

namespace ctl {

/// What the command line says.
struct LogOptions {
  std::size_t runs = 1;
  bool follow = false;
};

/// The last `options.runs` runs that the log tells of, wherever it is; kProblem where there is
/// none. With `follow`, prints those, then what comes, until the reader has gone.
Answer ShowLog(const LogOptions& options);

/// When the run began, what it decided, and how it ended, in a line.
std::string Headline(const LogRun& run);

}  // namespace ctl

#endif  // CTL_LOG_H_
