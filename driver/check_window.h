// Whether the updater's next scheduled check is due.
#ifndef DRIVER_CHECK_WINDOW_H_
#define DRIVER_CHECK_WINDOW_H_

namespace wakerly {

/// True when enough time has passed since the last check for the notifier to be started again.
bool IsScheduledCheckWindowElapsed();

}  // namespace wakerly

#endif  // DRIVER_CHECK_WINDOW_H_
