// Whether an administrator has suppressed the updater on this machine.
#ifndef DRIVER_ENABLED_CHECK_H_
#define DRIVER_ENABLED_CHECK_H_

namespace wakerly {

/// Whether the updater is enabled, that is not suppressed, and logs it. False also when the
/// administrator's preferences cannot be read; nothing is thrown.
bool CheckIfUpdaterIsEnabled();

}  // namespace wakerly

#endif  // DRIVER_ENABLED_CHECK_H_
