#include "driver/enabled_check.h"

#include <stdexcept>

#include "driver/admin_prefs.h"
#include "esd/log/updater_log.h"

namespace wakerly {
namespace {

bool IsSuppressed() {
  bool suppressed = false;
  if (!VantreUpdaterAdminPrefs::GetInstance().GetSuppressedPref().Get(suppressed)) {
    esd::UpdaterLog(esd::kMessageLevel,
                    "Error: CheckIfUpdaterIsEnabled - Failed to get admin preferences for updater "
                    "suppression");
    throw std::runtime_error("Failed to get admin preferences for updater suppression");
  }
  return suppressed;
}

}  // namespace

bool CheckIfUpdaterIsEnabled() {
  esd::UpdaterLog(esd::kStepLevel,
                  "UpdaterWakerly: Stepped into << CheckIfUpdaterIsEnabled >> call.");
  bool enabled = false;
  try {
    enabled = !IsSuppressed();
    esd::UpdaterLog(esd::kMessageLevel, enabled ? "UCIsUpdaterEnabled : UpdaterIsEnabled."
                                                : "CheckIfUpdaterIsEnabled : UpdaterIsNotEnabled.");
  } catch (...) {
    // Without an answer the updater is not said to be enabled.
  }
  esd::UpdaterLogInt(esd::kStepLevel,
                     "UpdaterWakerly : Returning from << CheckIfUpdaterIsEnabled >> call with "
                     "return value - ",
                     enabled ? 1 : 0);
  return enabled;
}

}  // namespace wakerly
