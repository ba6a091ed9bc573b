#include "esd/prefs/updater_prefs.h"

#include <cstdint>
#include <istream>
#include <stdexcept>

#include "esd/log/updater_log.h"
#include "esd/prefs/launch_agent.h"
#include "esd/util/delete_path.h"
#include "esd/util/file_stream.h"
#include "esd/util/path.h"

namespace esd {
namespace {

constexpr int kLogLevel = 2;
constexpr unsigned long kLockTimeout = 3000;
constexpr int kNeverCheck = 3;

std::string PrefsFolderOrEmpty() {
  std::string folder;
  GetUpdaterPrefsFolder(folder);
  return folder;
}

std::string PrefsFilePath(bool variant) {
  std::string path;
  if (!GetUpdaterPrefsFile(variant ? kVariantPrefsFileName : kPrefsFileName, path)) {
    throw std::runtime_error("Unable to create file!");
  }
  return path;
}

// The first word of the file `path`; false when there is no such file or no word in it.
bool ReadFirstWord(const std::string& path, std::string& word) {
  ESDifstream file(path, "rb");
  std::istream& stream = *file.stream();
  return file.stream()->is_open() && stream.seekg(0) && stream >> word;
}

}  // namespace

VantreUpdaterPrefs& VantreUpdaterPrefs::GetInstance(bool variant) {
  static VantreUpdaterPrefs instance(variant);
  return instance;
}

VantreUpdaterPrefs::VantreUpdaterPrefs(bool variant)
    : PrefsWriter("", "Preferences"), defaults_folder_(PrefsFolderOrEmpty()) {
#define VANTRE_SET_STORE(Type, key, ...) key##_.SetStore(this);
  VANTRE_UPDATER_PREFS(VANTRE_SET_STORE)
#undef VANTRE_SET_STORE
  LoadFile(variant);
  ReconcileUninstallStamp(variant);
  ReconcileScheduledTask();
}

VantreUpdaterPrefs::~VantreUpdaterPrefs() = default;

// The first load runs without a lock: a malformed file stays as it is then.
void VantreUpdaterPrefs::LoadFile(bool variant) {
  const std::string path = PrefsFilePath(variant);
  try {
    SetPrefsPath(path);
  } catch (...) {
    DeleteAllPrefs();
    SetPrefsPath(path);
  }
  auto locker = std::make_unique<ResourceLocker>(path, kLockTimeout);
  SetLockPolicy(locker.get());
  if (lock_policy() == locker.get()) locker_ = std::move(locker);
}

// An uninstallation since the preferences were written means that they are nobody's any more.
void VantreUpdaterPrefs::ReconcileUninstallStamp(bool variant) {
  std::string stamp_path;
  if (!GetUninstallStampPath(stamp_path)) {
    UpdaterLog(kLogLevel, "Could not get Updater Inventory path on machine ");
    return;
  }
  std::string stamp;
  std::string known_stamp;
  if (!ReadFirstWord(stamp_path, stamp) || !uninstallts_.Get(known_stamp)) return;
  if (stamp == known_stamp) return;
  DeletePath(PrefsFilePath(variant));
  LoadFile(variant);
  uninstallts_.Set(stamp);
}

// A task that is gone and not wanted must not be taken for one that will check.
void VantreUpdaterPrefs::ReconcileScheduledTask() {
  std::uint32_t error_code = 0;
  if (IsScheduledTaskPresent(error_code, L"VantreOrlanUpdater-1.0")) return;
  bool needed = true;
  bool added = false;
  if (!IsScheduledTaskNeeded_.Get(needed) || !IsScheduledTaskAdded_.Get(added)) return;
  if (!added || needed) return;
  IsScheduledTaskAdded_.Set(false);
  UpdaterPrefSchedCheckFreq_.Set(kNeverCheck);
}

std::string VantreUpdaterPrefs::InFolder(const char* name) const {
  return defaults_folder_.empty() ? "" : JoinPath(defaults_folder_, name);
}

std::string VantreUpdaterPrefs::FolderAbove() const { return GetParentFolder(defaults_folder_); }

std::string VantreUpdaterPrefs::UserCacheFolder() {
  std::string folder;
  GetUserCacheFolder(folder);
  return folder;
}

}  // namespace esd
