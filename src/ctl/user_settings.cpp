#include "ctl/user_settings.h"

#include <cstdint>

#include "driver/log_settings.h"
#include "esd/log/updater_log.h"
#include "esd/prefs/launch_agent.h"
#include "esd/prefs/uninstall_stamp.h"
#include "esd/prefs/updater_prefs.h"
#include "esd/util/delete_path.h"
#include "platform/file_type.h"

namespace ctl {
namespace {

void ReconcileUninstallStamp(UserSettings& user) {
  const std::optional<std::string> path = esd::GetUninstallStampPath();
  const std::optional<std::string> stamp = path ? esd::ReadUninstallStamp(*path) : std::nullopt;
  if (!stamp) return;
  const UserKeys keys;
  const Setting<std::string> known = user.settings.Read(keys.uninstallts());
  if (!esd::IsOutdatedBy(stamp, *known.value)) return;
  const std::string& file = *user.view.path();
  user.is_wiped = platform::IsFound(platform::TypeOfLink(file)) && esd::CouldDeleteFile(file);
  if (user.is_wiped) user.settings.ForgetFile(Source::kUninstallStamp);
  user.settings.Replace(known.key, *stamp, Source::kUninstallStamp);
}

void ReconcileScheduledTask(Settings& settings) {
  std::uint32_t error_code = 0;
  if (esd::IsScheduledTaskPresent(error_code, L"")) return;
  const UserKeys keys;
  const Setting<bool> needed = settings.Read(keys.IsScheduledTaskNeeded());
  const Setting<bool> added = settings.Read(keys.IsScheduledTaskAdded());
  if (!needed.value || !added.value) return;
  if (!esd::IsTaskRecordObsolete(*needed.value, *added.value)) return;
  settings.Replace(keys.IsScheduledTaskAdded().name, "0", Source::kLaunchAgent);
  settings.Replace(keys.UpdaterPrefSchedCheckFreq().name, std::to_string(esd::kCheckNever),
                   Source::kLaunchAgent);
}

}  // namespace

UserSettings::UserSettings(const PrefsView& file) : view(file), settings(file, Source::kUser) {
  if (!view.path()) return;
  is_locked = IsPrefsLockHeld(*view.path());
  if (is_locked) return;
  ReconcileUninstallStamp(*this);
  ReconcileScheduledTask(settings);
}

Setting<std::string> ReadLogSetting(UserSettings& user) {
  return user.settings.Read(UserKeys().StartupLogFile());
}

std::optional<std::string> FindLogFile(UserSettings& user) {
  return esd::UpdaterLogFile(wakerly::ChooseLog(*ReadLogSetting(user).value, 0).path);
}

}  // namespace ctl
