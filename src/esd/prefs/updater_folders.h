// The updater's own folders and files, all in versioned folders below well-known ones.
#ifndef ESD_PREFS_UPDATER_FOLDERS_H_
#define ESD_PREFS_UPDATER_FOLDERS_H_

#include <optional>
#include <string>

namespace esd {

/// Makes sure that the updater's folder stands below the folder `path`, and gives it in `path`. A
/// new folder takes the permission bits of the one above it, or is group-writable when `shared`;
/// those of an existing one stay. On false `path` is untouched, and what was made so far stays.
bool EnsureUpdaterFolder(std::string& path, bool shared);

/// Gives in `out` the updater's folder below the SpecialFolder `kind`, made when it is missing.
/// On false `out` is untouched.
bool GetUpdaterFolder(unsigned kind, std::string& out, bool shared);

/// Gives in `out` the folder of the updater's preferences and logs: the override when one is set,
/// else the updater's folder below the user's application support, else the one below the machine's
/// temporary folder. That one counts only when all three folders are real ones of the effective
/// user's which nobody else can write to; those that are made are open to that user alone. On false
/// `out` is untouched.
bool GetUpdaterPrefsFolder(std::string& out);

/// Uses `path` as the updater preferences folder for the rest of the process, as it is; an empty
/// one ends that.
void SetUpdaterPrefsFolderOverride(const std::string& path);

/// Names of what lies in the updater preferences folder.
///@{
inline constexpr char kPrefsFileName[] = "VantreUpdaterPrefs.dat";
inline constexpr char kVariantPrefsFileName[] = "VantreUpdaterOrlaneePrefs.dat";
inline constexpr char kDownloadFolderName[] = "Install";
inline constexpr char kUpdaterLogName[] = "orlanu.log";
inline constexpr char kLibraryLogName[] = "orlanuuLib.log";
inline constexpr char kInstallerLogName[] = "orlanui.log";
inline constexpr char kNotificationLogName[] = "orlanun.log";
inline constexpr char kStartupLogName[] = "orlanul.log";
inline constexpr char kSilentNotificationLogName[] = "orlanus.log";
///@}

/// The path of `name` in the updater preferences folder; nothing when that folder is not found.
std::optional<std::string> GetUpdaterPrefsFile(const char* name);

/// The folder that applications of the same maker cache in, which may be missing; nothing when the
/// folder above is not found.
std::optional<std::string> GetUserCacheFolder();

/// Gives in `out` the updater's inventory folder, which may be missing. False, and `out` untouched,
/// when the machine's application-support folder is not found.
bool GetInventoryFolder(std::string& out);

/// The path of the stamp that an uninstallation leaves in the inventory folder; nothing when that
/// folder is not found.
std::optional<std::string> GetUninstallStampPath();

/// The path of the administrator's preference file in the inventory folder; nothing when that
/// folder is not found.
std::optional<std::string> GetAdminPrefsFile();

/// Gives in `out` the path of the updates notifier's executable, which may be missing. False, with
/// `out` empty, when the machine's application-support folder is not found.
bool GetNotifierExecutablePath(std::string& out);

}  // namespace esd

#endif  // ESD_PREFS_UPDATER_FOLDERS_H_
