// `wakerlyctl explain`: what a run would do, and why.
#ifndef CTL_EXPLAIN_H_
#define CTL_EXPLAIN_H_

#include <optional>
#include <string>

#include "ctl/answer.h"

namespace ctl {

/// What the command line says.
struct ExplainOptions {
  bool is_scheduled = false;
  std::optional<std::string> at;  ///< a date YYYY-MM-DD; nothing for today
};

/// Foretells the run. Nothing, when `at` is no date.
std::optional<Answer> Explain(const ExplainOptions& options);

}  // namespace ctl

#endif  // CTL_EXPLAIN_H_
