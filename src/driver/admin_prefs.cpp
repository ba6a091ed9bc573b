#include "driver/admin_prefs.h"

#include <stdexcept>
#include <string>

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
  try {
    SetPrefsPath(path);
  } catch (const std::invalid_argument&) {
    DeleteAllPrefs();
    SetPrefsPath(path);
  }
  locker_ = std::make_unique<esd::ResourceLocker>(path, 3000);
  SetLockPolicy(locker_.get());
}

VantreUpdaterAdminPrefs::~VantreUpdaterAdminPrefs() = default;

}  // namespace wakerly
