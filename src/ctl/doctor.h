// `wakerlyctl doctor`: everything that a run depends on, and how it is.
#ifndef CTL_DOCTOR_H_
#define CTL_DOCTOR_H_

#include "ctl/answer.h"

namespace ctl {

/// What the command line says.
struct DoctorOptions {
  bool loads_library = false;  ///< whether the client library is loaded for a trial
  bool was_root = false;       ///< whether root called this program, which looks as another user
};

/// Looks at everything. The status is kProblem when one of the checks is a problem. Waits about a
/// second for each lock that is held.
Answer Examine(const DoctorOptions& options);

}  // namespace ctl

#endif  // CTL_DOCTOR_H_
