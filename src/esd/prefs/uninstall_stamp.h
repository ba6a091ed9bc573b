// The stamp that an uninstallation of the updater leaves, which outdates the preferences.
#ifndef ESD_PREFS_UNINSTALL_STAMP_H_
#define ESD_PREFS_UNINSTALL_STAMP_H_

#include <optional>
#include <string>

namespace esd {

/// The stamp in the file `path`: its first word. Nothing when there is no such file, or no word
/// that ends within 4096 bytes (half a word would be no stamp, and must not cost the preferences),
/// or one that XML cannot hold.
std::optional<std::string> ReadUninstallStamp(const std::string& path);

/// Whether preferences that know the stamp `known` were written before the uninstallation that left
/// `stamp`: then they do not count for what was installed since.
inline bool IsOutdatedBy(const std::optional<std::string>& stamp, const std::string& known) {
  return stamp && *stamp != known;
}

}  // namespace esd

#endif  // ESD_PREFS_UNINSTALL_STAMP_H_
