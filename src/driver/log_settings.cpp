#include "driver/log_settings.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "esd/log/updater_log.h"
#include "esd/prefs/updater_folders.h"
#include "platform/file_type.h"

namespace wakerly {

LogChoice ChooseLog(const std::string& stored_path, int stored_level) {
  constexpr int kDefaultLevel = esd::kMessageLevel;
  LogChoice choice{.path = stored_path, .level = stored_level};
  if (choice.path.empty()) {
    choice.path = esd::GetUpdaterPrefsFile(esd::kStartupLogName).value_or("");
    choice.writes_path = !choice.path.empty();
  }
  choice.writes_level = choice.level == kLogLevelNotSet;
  if (choice.writes_level) choice.level = kDefaultLevel;
  return choice;
}

std::optional<std::string> FindLogObstacle(const std::string& path) {
  // A link that leads nowhere names the file that would have to be made.
  const std::optional<platform::LinkEnd> end = platform::FollowLinks(path);
  if (!end) return std::strerror(ELOOP);
  const auto& [file, type] = *end;
  if (type == platform::FileType::kUnknown) return std::strerror(errno);
  if (type == platform::FileType::kFolder) return std::strerror(EISDIR);
  if (type == platform::FileType::kOther) return "it is not a file";
  // With "." at its end, the path of what is no folder leads nowhere.
  const std::string written =
      platform::IsFound(type) ? file : file.substr(0, file.rfind('/') + 1) + ".";
  if (faccessat(AT_FDCWD, written.c_str(), W_OK, AT_EACCESS) == 0) return std::nullopt;
  return std::strerror(errno);
}

}  // namespace wakerly
