// The answers of the checks on a machine whose administrator has suppressed the updater and whose next
// check is not due.
#include "driver/check_window.h"
#include "driver/enabled_check.h"

namespace wakerly {

bool CheckIfUpdaterIsEnabled() { return false; }
bool IsScheduledCheckWindowElapsed() { return false; }

}  // namespace wakerly
