// The updater's preferences: every key with its type and default, the file that they are kept in,
// and what is put right when they are loaded.
#ifndef ESD_PREFS_UPDATER_PREFS_H_
#define ESD_PREFS_UPDATER_PREFS_H_

#include <memory>
#include <string>

#include "esd/prefs/basic_pref.h"
#include "esd/prefs/map_pref.h"
#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/resource_locker.h"
#include "esd/prefs/updater_folders.h"

/// One row for each preference, in the updater's own order: its type, its key, and its default
/// unless it is a map, whose default is empty. The getter of the key "Launch" is GetLaunchPref.
// clang-format off
#define VANTRE_UPDATER_PREFS(PREF)                                                          \
  PREF(BoolPref,      AutoCheck,                  true)                                     \
  PREF(IntPref,       Automatic,                  0)                                        \
  PREF(IntPref,       AutoCheckType,              0)                                        \
  PREF(StringPref,    DownloadDir,                InFolder(esd::kDownloadFolderName))       \
  PREF(StringPref,    UserCache,                  UserCacheFolder())                        \
  PREF(StringPref,    UserCacheTillOrlanUPdater,  FolderAbove())                            \
  PREF(StringPref,    DisplayLang,                "")                                       \
  PREF(BoolPref,      IsFirstRun,                 true)                                     \
  PREF(BoolPref,      IsScheduledTaskAdded,       false)                                    \
  PREF(BoolPref,      IsScheduledTaskNeeded,      true)                                     \
  PREF(BoolPref,      InBackground,               false)                                    \
  PREF(BoolPref,      InTrayIcon,                 false)                                    \
  PREF(IntPref,       AutoCheckFreq,              0)                                        \
  PREF(IntPref,       UpdaterPrefSchedCheckFreq,  0)                                        \
  PREF(StringPref,    LastDateCheck,              "")                                       \
  PREF(StringPref,    uninstallts,                "")                                       \
  PREF(IntPref,       UpdaterDailyScheduledTimeHH, 2)                                       \
  PREF(IntPref,       UpdaterDailyScheduledTimeMM, 0)                                       \
  PREF(BoolPref,      ShowNewProducts,            false)                                    \
  PREF(BoolPref,      SilentCheck,                false)                                    \
  PREF(BoolMapPref,   ApplicationsEnabled)                                                  \
  PREF(StringMapPref, NotificationMessage)                                                  \
  PREF(BoolMapPref,   ChannelsInstalled)                                                    \
  PREF(BoolMapPref,   ChannelsEnabled)                                                      \
  PREF(BoolMapPref,   OndriChannels)                                                        \
  PREF(StringPref,    Launch,                     "")                                       \
  PREF(StringPref,    ProxyServer,                "")                                       \
  PREF(StringPref,    ProxyPort,                  "")                                       \
  PREF(IntPref,       ConnectionType,             0)                                        \
  PREF(StringPref,    LogFile,                    InFolder(esd::kUpdaterLogName))           \
  PREF(StringPref,    logFileLib,                 InFolder(esd::kLibraryLogName))           \
  PREF(StringPref,    InstallerLogFile,           InFolder(esd::kInstallerLogName))         \
  PREF(StringPref,    NotificationLogFile,        InFolder(esd::kNotificationLogName))      \
  PREF(StringPref,    StartupLogFile,             InFolder(esd::kStartupLogName))           \
  PREF(StringPref,    SilentNotificationLogFile,  InFolder(esd::kSilentNotificationLogName))\
  PREF(IntPref,       LogLevel,                   2)                                        \
  PREF(StringPref,    OSVersion,                  "")                                       \
  PREF(StringPref,    MondoUVersion,              "")                                       \
  PREF(StringPref,    WebFeedOverriddenURL,       "")                                       \
  PREF(StringPref,    WebFeedEtag,                "")                                       \
  PREF(CountPref,     WebFeedSize,                0)                                        \
  PREF(CountPref,     WebFeedSeqNo,               0)
// clang-format on

namespace esd {

/// The value of UpdaterPrefSchedCheckFreq with which the updater never checks by itself.
inline constexpr int kCheckNever = 3;

/// The root element of a preference file.
inline constexpr char kPrefsRootName[] = "Preferences";

/// The defaults that name folders, for a scope in which VANTRE_UPDATER_PREFS is used. Each is empty
/// where its folder is not found.
class UpdaterPrefDefaults {
 protected:
  UpdaterPrefDefaults();
  /// The path of `name` in the updater preferences folder.
  std::string InFolder(const char* name) const;
  /// The folder above that folder.
  std::string FolderAbove() const;
  static std::string UserCacheFolder();

 private:
  std::string folder_;  ///< the updater preferences folder
};

/// Whether the record of a scheduled task whose launch agent is missing must not look like one that
/// will check: the task is not needed, and was added all the same.
inline bool IsTaskRecordObsolete(bool needed, bool added) { return added && !needed; }

/// The store of the updater's preferences, with an object for each key. One thread uses it.
class VantreUpdaterPrefs : public PrefsWriter, private UpdaterPrefDefaults {
 public:
  /// The types that the rows of VANTRE_UPDATER_PREFS name.
  ///@{
  using BoolPref = BasicPref<bool>;
  using IntPref = BasicPref<int>;
  using CountPref = BasicPref<unsigned long>;
  using StringPref = BasicPref<std::string>;
  using BoolMapPref = MapPref<std::string, bool>;
  using StringMapPref = MapPref<std::string, std::string>;
  ///@}

  /// The process's one instance, made on the first call and destroyed when the process ends.
  /// `variant`, which chooses the file's name, counts on that call only. Throws std::runtime_error
  /// when there is no folder for the file; then the next call tries again.
  static VantreUpdaterPrefs& GetInstance(bool variant);

  ~VantreUpdaterPrefs() override;

#define VANTRE_GETTER(Type, key, ...) \
  Type& Get##key##Pref() { return key##_; }
  /// The object of one key; it lives as long as the store.
  ///@{
  VANTRE_UPDATER_PREFS(VANTRE_GETTER)
  ///@}
#undef VANTRE_GETTER

 private:
  explicit VantreUpdaterPrefs(bool variant);

  void LoadFile(bool variant);
  void ReconcileUninstallStamp(bool variant);
  void ReconcileScheduledTask();

#define VANTRE_MEMBER(Type, key, ...) Type key##_{#key __VA_OPT__(, ) __VA_ARGS__};
  VANTRE_UPDATER_PREFS(VANTRE_MEMBER)
#undef VANTRE_MEMBER
  std::unique_ptr<ResourceLocker> locker_;
};

}  // namespace esd

#endif  // ESD_PREFS_UPDATER_PREFS_H_
