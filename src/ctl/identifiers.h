// The identifiers by which scripts know what a command found. They are only ever added to.
#ifndef CTL_IDENTIFIERS_H_
#define CTL_IDENTIFIERS_H_

/// One row for each identifier: its enumerator, its name, and what it means.
// clang-format off
#define WAKERLYCTL_IDENTIFIERS(ID)                                                                \
  ID(kLogWritten, "log.written", "The run writes its log.")                                       \
  ID(kLogOff, "log.off", "LogLevel is 0 or below: no log is wanted.")                             \
  ID(kLogLevelUnreadable, "log.level-unreadable", "LogLevel is no number: there is no log.")      \
  ID(kLogPreferencesLocked, "log.preferences-locked",                                             \
     "The preferences are locked by another process, or by a lock left behind: there is no log.") \
  ID(kLogNoFolder, "log.no-folder", "There is no folder for the preferences, and no log.")        \
  ID(kLogUnwritable, "log.unwritable", "The log file cannot be written.")                         \
  ID(kLogDiskFull, "log.disk-full", "The disk of the log file is full.")                          \
  ID(kLogLockDenied, "log.lock-denied", "The log's lock belongs to another user.")                \
  ID(kUpdaterEnabled, "updater.enabled", "No administrator has suppressed the updater.")          \
  ID(kUpdaterSuppressed, "updater.suppressed",                                                    \
     "An administrator has suppressed the updater; a run only warns of it.")                      \
  ID(kUpdaterUnreadable, "updater.unreadable",                                                    \
     "Suppressed is neither 1 nor 0: the updater does not count as enabled.")                     \
  ID(kUpdaterLocked, "updater.preferences-locked",                                                \
     "The administrator's preferences are locked: the updater does not count as enabled.")        \
  ID(kUpdaterNoFolder, "updater.no-folder",                                                       \
     "The machine has no application support folder: the updater does not count as enabled.")     \
  ID(kCheckDue, "check.due", "The period since the last check has passed.")                       \
  ID(kCheckNotDue, "check.not-due", "The period since the last check has not passed yet.")        \
  ID(kCheckDateAhead, "check.date-ahead",                                                         \
     "The last check lies in the future: the run puts today in its place.")                       \
  ID(kCheckNever, "check.never", "Checks are set to never.")                                      \
  ID(kCheckNeverRun, "check.never-run", "The updater has never checked: there is no last check.") \
  ID(kCheckInvalidTime, "check.invalid-time",                                                     \
     "The time of the last check has not three fields: the check is due.")                        \
  ID(kCheckNoDate, "check.no-date", "The last check holds no date: the check is due.")            \
  ID(kCheckInvalidDate, "check.invalid-date",                                                     \
     "The date of the last check is no date: the check is due.")                                  \
  ID(kCheckClockFails, "check.clock-fails", "The local date is not known: the check is due.")     \
  ID(kCheckFrequencyUnreadable, "check.frequency-unreadable",                                     \
     "UpdaterPrefSchedCheckFreq is no number: the check is not due.")                             \
  ID(kCheckPreferencesLocked, "check.preferences-locked",                                         \
     "The preferences are locked: the check is not due.")                                         \
  ID(kCheckNoFolder, "check.no-folder",                                                           \
     "There is no folder for the preferences: the check is not due.")                             \
  ID(kCheckNotAsked, "check.not-asked", "A scheduled run does not ask whether a check is due.")   \
  ID(kCheckNotReached, "check.not-reached",                                                       \
     "The run ends before it asks whether a check is due.")                                       \
  ID(kNotifierStarts, "notifier.starts", "The run starts the notifier.")                          \
  ID(kNotifierNotDue, "notifier.not-due", "The notifier is not started: no check is due.")        \
  ID(kNotifierSuiteInstalled, "notifier.suite-installed",                                         \
     "The notifier is not started: the desktop suite does its work.")                             \
  ID(kNotifierMissing, "notifier.missing", "The notifier's file is missing.")                     \
  ID(kNotifierNotAFile, "notifier.not-a-file",                                                    \
     "What stands in the place of the notifier's file is no file.")                               \
  ID(kNotifierNotExecutable, "notifier.not-executable",                                           \
     "The notifier's file may not be executed by this user.")                                     \
  ID(kNotifierNoProgram, "notifier.no-program",                                                   \
     "The notifier's file is no program for this machine.")                                       \
  ID(kNotifierNoPath, "notifier.no-path",                                                         \
     "The machine has no application support folder: the run ends with status 1.")                \
  ID(kLibraryUsable, "library.usable",                                                            \
     "The client library is a readable file for this processor.")                                 \
  ID(kLibraryMissing, "library.missing", "The client library is missing.")                        \
  ID(kLibraryNotAFile, "library.not-a-file",                                                      \
     "What stands in the place of the client library is no file.")                                \
  ID(kLibraryUnreadable, "library.unreadable", "The client library may not be read.")             \
  ID(kLibraryNoLibrary, "library.no-library", "The client library's file is in no format of a library.") \
  ID(kLibraryOtherProcessor, "library.other-processor",                                           \
     "The client library is for another processor.")                                              \
  ID(kLockNoFolder, "lock.no-folder", "There is no folder for the preference file.")              \
  ID(kLockFree, "lock.free", "Nobody holds the lock of the preference file.")                     \
  ID(kLockHeld, "lock.held",                                                                      \
     "The preference file is locked by another process, or by a lock left behind.")               \
  ID(kLockInUse, "lock.in-use", "The lock is not removed: a run lives that could hold it.")       \
  ID(kLockTooYoung, "lock.too-young", "The lock is not removed: it is not two seconds old.")      \
  ID(kLockNotConfirmed, "lock.not-confirmed", "The lock is not removed: nobody said yes.")        \
  ID(kLockReplaced, "lock.replaced",                                                              \
     "The lock is not removed: another one stands in its place meanwhile.")                       \
  ID(kLockNotRemovable, "lock.not-removable", "The system refuses to remove the lock.")           \
  ID(kLockGone, "lock.gone", "The lock was given back before it could be removed.")               \
  ID(kLockRemoved, "lock.removed", "The lock was removed.")
// clang-format on

namespace ctl {

/// The identifiers.
enum class Id {
#define WAKERLYCTL_ENUMERATOR(enumerator, name, meaning) enumerator,
  WAKERLYCTL_IDENTIFIERS(WAKERLYCTL_ENUMERATOR)
#undef WAKERLYCTL_ENUMERATOR
};

/// One row of the table.
struct Identifier {
  const char* name;     ///< such as "check.not-due"
  const char* meaning;  ///< a sentence
};

/// The table, by the number of the enumerator.
inline constexpr Identifier kIdentifiers[] = {
#define WAKERLYCTL_ROW(enumerator, name, meaning) {name, meaning},
    WAKERLYCTL_IDENTIFIERS(WAKERLYCTL_ROW)
#undef WAKERLYCTL_ROW
};

/// The name and the meaning of `id`.
///@{
constexpr const char* NameOf(Id id) { return kIdentifiers[static_cast<unsigned>(id)].name; }
constexpr const char* MeaningOf(Id id) { return kIdentifiers[static_cast<unsigned>(id)].meaning; }
///@}

}  // namespace ctl

#endif  // CTL_IDENTIFIERS_H_
