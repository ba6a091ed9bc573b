#include "driver/admin_prefs.h"

#include <optional>
#include <stdexcept>
#include <string>

#include "esd/prefs/load_store.h"
#include "esd/prefs/updater_folders.h"
#include "esd/prefs/updater_prefs.h"

namespace wakerly {

VantreUpdaterAdminPrefs& VantreUpdaterAdminPrefs::GetInstance() {
  static VantreUpdaterAdminPrefs instance;
  return instance;
}

VantreUpdaterAdminPrefs::VantreUpdaterAdminPrefs() : PrefsWriter("", esd::kPrefsRootName) {
  suppressed_.SetStore(this);
  const std::optional<std::string> path = esd::GetAdminPrefsFile();
  if (!path) throw std::runtime_error("Unable to create file!");
  esd::LoadStore(*this, *path, esd::ReloadAfter::kInvalidArgument, locker_);
}

VantreUpdaterAdminPrefs::~VantreUpdaterAdminPrefs() = default;

}  // namespace wakerly
