// Whether an administrator has suppressed the updater on this machine.
#ifndef DRIVER_ENABLED_CHECK_H_
#define DRIVER_ENABLED_CHECK_H_

namespace wakerly {

/// True when the updater is enabled, that is not suppressed.
bool CheckIfUpdaterIsEnabled();

}  // namespace wakerly

#endif  // DRIVER_ENABLED_CHECK_H_
