// Which log a run writes, from what the preferences say of it.
#ifndef DRIVER_LOG_SETTINGS_H_
#define DRIVER_LOG_SETTINGS_H_

#include <optional>
#include <string>

namespace wakerly {

/// The value of LogLevel that stands for none.
inline constexpr int kLogLevelNotSet = -1;

/// The log of a run.
struct LogChoice {
  std::string path;           ///< empty when none is set and the updater has no folder
  int level = 0;              ///< at 0 or below there is no log; never kLogLevelNotSet
  bool writes_path = false;   ///< whether the preferences lack the path, and get it
  bool writes_level = false;  ///< whether they lack the level, and get it
};

/// The log for what the preferences hold: a path, empty for none, and a level, which may be
/// kLogLevelNotSet.
LogChoice ChooseLog(const std::string& stored_path, int stored_level);

/// Why no line could be written to the log file `path`, as far as a look at it and its folder
/// tells; nothing where that tells nothing.
std::optional<std::string> FindLogObstacle(const std::string& path);

}  // namespace wakerly

#endif  // DRIVER_LOG_SETTINGS_H_
