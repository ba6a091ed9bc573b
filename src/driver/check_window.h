// Whether the updater's next scheduled check is due.
#ifndef DRIVER_CHECK_WINDOW_H_
#define DRIVER_CHECK_WINDOW_H_

namespace wakerly {

/// True when enough days have passed since the last check for the notifier to be started again, or
/// when the date of the last check makes no sense. False when the updater has never run, when it is
/// never to check, and when its preferences cannot be read. Nothing is thrown. A last check in the
/// future is set to today.
bool IsScheduledCheckWindowElapsed();

}  // namespace wakerly

#endif  // DRIVER_CHECK_WINDOW_H_
