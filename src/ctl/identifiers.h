// The identifiers by which scripts know what a command found. They are only ever added to.
#ifndef CTL_IDENTIFIERS_H_
#define CTL_IDENTIFIERS_H_

/// The rows of one preference file, with what begins their enumerators, names and meanings.
// clang-format off
#define WAKERLYCTL_FILE_IDENTIFIERS(ID, Prefix, name, file)                                       \
  ID(Prefix##Ok, name ".ok",                                                                      \
     file " is well-formed, and has nothing that a program would stumble over.")                  \
  ID(Prefix##NoFolder, name ".no-folder", file " has no folder.")                                 \
  ID(Prefix##Missing, name ".missing", file " is missing: every key has its default.")            \
  ID(Prefix##NotAFile, name ".not-a-file", file " is no file: every key has its default.")        \
  ID(Prefix##Unreadable, name ".unreadable", file " cannot be read: every key has its default.")  \
  ID(Prefix##Empty, name ".empty", file " is empty: every key has its default.")                  \
  ID(Prefix##Malformed, name ".malformed",                                                        \
     file " is no well-formed XML: every key has its default, and nothing can be saved.")         \
  ID(Prefix##NoRoot, name ".no-root",                                                             \
     file " has another root element: every key has its default, and the next save breaks it.")   \
  ID(Prefix##UnknownKey, name ".unknown-key", file " holds a key that nothing reads.")            \
  ID(Prefix##DoubledKey, name ".doubled-key", file " holds a key more than once: the first counts.")       \
  ID(Prefix##BadValue, name ".bad-value",                                                         \
     file " holds a value that is not of the type of its key.")                                   \
  ID(Prefix##BreaksOnSave, name ".breaks-on-save",                                                \
     file " will be no well-formed XML after the next save.")                                     \
  ID(Prefix##ChangesOnSave, name ".changes-on-save",                                              \
     file " holds a text that the next save changes.")
// clang-format on

/// One row for each identifier: its enumerator, its name, and what it means.
// clang-format off
#define WAKERLYCTL_IDENTIFIERS(ID)                                                                \
  ID(kLogWritten, "log.written", "The run writes its log.")                                       \
  ID(kLogOff, "log.off", "LogLevel is 0 or below -1: no log is wanted.")                          \
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
  ID(kCheckNoDate, "check.no-date",                                                              \
     "The last check has no date with a T and a time behind it: the check is due.")              \
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
  ID(kLockRemoved, "lock.removed", "The lock was removed.")                                       \
  WAKERLYCTL_FILE_IDENTIFIERS(ID, kPreferences, "preferences", "The user's preference file")      \
  WAKERLYCTL_FILE_IDENTIFIERS(ID, kAdminPreferences, "administrator-preferences",                 \
                              "The administrator's preference file")                              \
  ID(kHomeOk, "home.ok", "The home folder is there and the user's own.")                          \
  ID(kHomeUnknown, "home.unknown", "No home folder is known.")                                    \
  ID(kHomeMissing, "home.missing", "The home folder is missing.")                                 \
  ID(kHomeNotAFolder, "home.not-a-folder",                                                        \
     "What stands in the place of the home folder is no folder.")                                 \
  ID(kHomeNotOwned, "home.not-owned", "The home folder belongs to another user.")                 \
  ID(kFolderOk, "folder.ok",                                                                      \
     "The folder of the preferences is the user's own and can be written, or can be made.")       \
  ID(kFolderNone, "folder.none", "There is no folder for the preferences, and none can be made.") \
  ID(kFolderTemporary, "folder.temporary",                                                        \
     "The home folder has no place for the preferences: they are in the temporary folder.")       \
  ID(kFolderNotOwned, "folder.not-owned",                                                         \
     "The folder of the preferences belongs to another user.")                                    \
  ID(kFolderUnwritable, "folder.unwritable", "The folder of the preferences cannot be written.")  \
  ID(kPreferencesUnwritable, "preferences.unwritable",                                            \
     "The user's preference file cannot be written: nothing is saved.")                           \
  ID(kStampOk, "stamp.ok", "No uninstall stamp outdates the preferences.")                        \
  ID(kStampWipes, "stamp.wipes", "An uninstall stamp makes the next run remove the preferences.") \
  ID(kAgentOk, "agent.ok", "The launch agent is there and so is its program.")                    \
  ID(kAgentNone, "agent.none",                                                                    \
     "There is no launch agent for scheduled checks, and none is recorded.")                      \
  ID(kAgentNotInstalled, "agent.not-installed", "A launch agent of wakerly's own is missing.")    \
  ID(kAgentMissing, "agent.missing",                                                              \
     "The preferences record a launch agent for scheduled checks, and it is missing.")            \
  ID(kAgentMalformed, "agent.malformed", "The launch agent is no property list with a label.")    \
  ID(kAgentUnreadable, "agent.unreadable", "The launch agent may not be read by this user.")      \
  ID(kAgentNoProgram, "agent.no-program", "The launch agent names no program.")                   \
  ID(kAgentProgramMissing, "agent.program-missing",                                               \
     "The program that the launch agent starts is missing.")                                      \
  ID(kAgentProgramNotExecutable, "agent.program-not-executable",                                  \
     "The program that the launch agent starts may not be executed by this user.")                \
  ID(kAgentTimeDiffers, "agent.time-differs",                                                     \
     "The launch agent starts at another time than the preferences say.")                         \
  ID(kLogLevelBeyondScale, "log.level-beyond-scale",                                              \
     "LogLevel is above 10, which logs less than 3 does.")                                        \
  ID(kLogEndangersPreferences, "log.endangers-preferences",                                       \
     "The log is the preference file, or has a name that this begins with: the log spoils it.")   \
  ID(kLogRollsOver, "log.rolls-over",                                                             \
     "The log has reached its size: the next run moves it to a backup.")                          \
  ID(kLogSwitched, "log.switched", "A switch file turns the log up.")                             \
  ID(kLogSwitchWithoutEffect, "log.switch-without-effect",                                        \
     "A file is named like a switch of the log, and is none.")                                    \
  ID(kLogKeepsBackups, "log.keeps-backups", "A file beside the log keeps all its backups.")       \
  ID(kLogLockInUse, "log.lock-in-use", "A living process holds the log's lock.")                  \
  ID(kLogLockStuck, "log.lock-stuck",                                                             \
     "The log's lock is taken and no living process holds it: a run waits without an end.")                  \
  ID(kClockOk, "clock.ok", "The clock shows a date that can be.")                                 \
  ID(kClockBehind, "clock.behind", "The clock shows a date before 2020.")                         \
  ID(kLibraryLoads, "library.loads", "The client library loads and has all its entry points.")    \
  ID(kLibraryDoesNotLoad, "library.does-not-load", "The loader refuses the client library.")      \
  ID(kLibraryEntryPointMissing, "library.entry-point-missing",                                    \
     "The client library loads and lacks an entry point.")                                        \
  ID(kLibraryHangs, "library.hangs", "Loading the client library does not end.")                  \
  ID(kLibraryCrashes, "library.crashes", "Loading the client library ends the process.")          \
  ID(kLibraryNotTried, "library.not-tried",                                                       \
     "No process could be started to load the client library.")
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
