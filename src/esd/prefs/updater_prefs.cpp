#include "esd/prefs/updater_prefs.h"

#include <cstdint>
#include <optional>
#include <stdexcept>

#include "esd/log/updater_log.h"
#include "esd/prefs/launch_agent.h"
#include "esd/prefs/load_store.h"
#include "esd/prefs/uninstall_stamp.h"
#include "esd/util/delete_path.h"
#include "esd/util/path.h"

namespace esd {
namespace {

std::string PrefsFilePath(bool variant) {
  const auto path = GetUpdaterPrefsFile(variant ? kVariantPrefsFileName : kPrefsFileName);
  if (!path) throw std::runtime_error("Unable to create file!");
  return *path;
}

}  // namespace

UpdaterPrefDefaults::UpdaterPrefDefaults() { GetUpdaterPrefsFolder(folder_); }

std::string UpdaterPrefDefaults::InFolder(const char* name) const {
  return folder_.empty() ? "" : JoinPath(folder_, name);
}

std::string UpdaterPrefDefaults::FolderAbove() const { return GetParentFolder(folder_); }

std::string UpdaterPrefDefaults::UserCacheFolder() { return GetUserCacheFolder().value_or(""); }

VantreUpdaterPrefs& VantreUpdaterPrefs::GetInstance(bool variant) {
  static VantreUpdaterPrefs instance(variant);
  return instance;
}

VantreUpdaterPrefs::VantreUpdaterPrefs(bool variant) : PrefsWriter("", kPrefsRootName) {
#define VANTRE_SET_STORE(Type, key, ...) key##_.SetStore(this);
  VANTRE_UPDATER_PREFS(VANTRE_SET_STORE)
#undef VANTRE_SET_STORE
  LoadFile(variant);
  ReconcileUninstallStamp(variant);
  ReconcileScheduledTask();
}

VantreUpdaterPrefs::~VantreUpdaterPrefs() = default;

void VantreUpdaterPrefs::LoadFile(bool variant) {
  LoadStore(*this, PrefsFilePath(variant), ReloadAfter::kAnyException, locker_);
}

void VantreUpdaterPrefs::ReconcileUninstallStamp(bool variant) {
  const std::optional<std::string> stamp_path = GetUninstallStampPath();
  if (!stamp_path) {
    UpdaterLog(kMessageLevel, "Could not get Updater Inventory path on machine ");
    return;
  }
  const std::optional<std::string> stamp = ReadUninstallStamp(*stamp_path);
  std::string known_stamp;
  if (!stamp || !uninstallts_.Get(known_stamp) || !IsOutdatedBy(stamp, known_stamp)) return;
  DeleteFile(PrefsFilePath(variant));
  LoadFile(variant);
  uninstallts_.Set(*stamp);
}

void VantreUpdaterPrefs::ReconcileScheduledTask() {
  std::uint32_t error_code = 0;
  if (IsScheduledTaskPresent(error_code, L"VantreOrlanUpdater-1.0")) return;
  bool needed = true;
  bool added = false;
  if (!IsScheduledTaskNeeded_.Get(needed) || !IsScheduledTaskAdded_.Get(added)) return;
  if (!IsTaskRecordObsolete(needed, added)) return;
  IsScheduledTaskAdded_.Set(false);
  UpdaterPrefSchedCheckFreq_.Set(kCheckNever);
}

}  // namespace esd
