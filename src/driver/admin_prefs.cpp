#include "driver/admin_prefs.h"

#include <stdexcept>
#include <string>

#include "esd/prefs/load_store.h"
#include "esd/prefs/updater_folders.h"
#include "esd/util/path.h"

namespace wakerly {

VantreUpdaterAdminPrefs& VantreUpdaterAdminPrefs::GetInstance() {
  static VantreUpdaterAdminPrefs instance;
  return instance;
}

VantreUpdaterAdminPrefs::VantreUpdaterAdminPrefs() : PrefsWriter("", "Preferences") {
  suppressed_.SetStore(this);
  std::string folder;
  if (!esd::GetInventoryFolder(folder)) throw std::runtime_error("Unable to create file!");
  const std::string path = esd::JoinPath(folder, "VantreUpdaterAdminPrefs.dat");
  esd::LoadStore(*this, path, esd::ReloadAfter::kInvalidArgument, locker_);
}

VantreUpdaterAdminPrefs::~VantreUpdaterAdminPrefs() = default;

}  // namespace wakerly
