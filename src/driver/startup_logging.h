// Where this run's log goes, how detailed it is, and its first lines.
#ifndef DRIVER_STARTUP_LOGGING_H_
#define DRIVER_STARTUP_LOGGING_H_

namespace wakerly {

/// The texts by which the lines of a run are known in a log that other programs write, too.
///@{
inline constexpr char kLogComponent[] = "UPDATER";
inline constexpr char kLogSubComponent[] = "WAKERLY";
///@}

/// Opens the updater log as the preferences say, and writes its first lines. A log path or level
/// that the preferences lack is written back to them. At level 0 or below -1 there is no log in
/// this run; when there is none for another reason, standard error and the system's log are told
/// which. Always true; nothing is thrown.
bool SetUpStartupLogging();

}  // namespace wakerly

#endif  // DRIVER_STARTUP_LOGGING_H_
