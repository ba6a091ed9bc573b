// Whether the launch agents that start wakerly are there, and start it.
#ifndef CTL_AGENT_CHECKS_H_
#define CTL_AGENT_CHECKS_H_

#include "ctl/check.h"
#include "ctl/prefs_view.h"

namespace ctl {

/// Adds what is found about wakerly's own two agents and about the user's, which `preferences`
/// tells of.
void CheckAgents(Checks& checks, const PrefsView& preferences);

}  // namespace ctl

#endif  // CTL_AGENT_CHECKS_H_
