// The user's preferences as a run finds them once it has put right what it puts right.
#ifndef CTL_USER_SETTINGS_H_
#define CTL_USER_SETTINGS_H_

#include <optional>
#include <string>

#include "ctl/prefs_view.h"
#include "ctl/settings.h"

namespace ctl {

/// What a run that begins now would read.
struct UserSettings {
  /// Looks at the lock, the uninstall stamp and the launch agent. Waits about a second where the
  /// lock is held. `file` is the user's and must outlive this object.
  explicit UserSettings(const PrefsView& file);

  const PrefsView& view;
  Settings settings;
  bool is_locked = false;  ///< then the run reads nothing, and `settings` is what the file holds
  bool is_wiped = false;   ///< whether an uninstall stamp makes the run remove the file
};

/// The setting StartupLogFile, where the log is to go.
Setting<std::string> ReadLogSetting(UserSettings& user);

/// The path of the file that the log of a run at any level goes to, as that
/// setting names it. Nothing where there is no folder for it.
std::optional<std::string> FindLogFile(UserSettings& user);

}  // namespace ctl

#endif  // CTL_USER_SETTINGS_H_
