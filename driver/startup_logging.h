// Where this run's log goes, and its first lines.
#ifndef DRIVER_STARTUP_LOGGING_H_
#define DRIVER_STARTUP_LOGGING_H_

namespace wakerly {

/// Opens the updater log and writes its first lines. Always true: a log that cannot be opened stops
/// nothing.
bool SetUpStartupLogging();

}  // namespace wakerly

#endif  // DRIVER_STARTUP_LOGGING_H_
