#include "esd/prefs/launch_agent.h"

#include <cstdio>
#include <cstring>

#include "esd/util/special_folder.h"
#include "platform/file_type.h"

namespace esd {
namespace {

constexpr std::uint32_t kNoBuffer = 120;
constexpr std::uint32_t kNoFolder = 73;

}  // namespace

bool GetLaunchAgentsFolder(std::uint32_t& errorCode, char* buffer, std::size_t bufferSize,
                           bool create) {
  errorCode = 0;
  if (buffer == nullptr || bufferSize == 0) {
    errorCode = kNoBuffer;
    return false;
  }
  std::string folder;
  if (!GetSpecialFolder(kUserPreferences, folder, create)) {
    errorCode = kNoFolder;
    return false;
  }
  std::snprintf(buffer, bufferSize, "%s/../LaunchAgents/", folder.c_str());
  return true;
}

std::optional<std::string> GetLaunchAgentPath(std::uint32_t& errorCode) {
  char path[1024];
  if (!GetLaunchAgentsFolder(errorCode, path, sizeof path, false)) return std::nullopt;
  const std::size_t length = std::strlen(path);
  std::snprintf(path + length, sizeof path - length, "%s", kLaunchAgentName);
  return path;
}

bool IsScheduledTaskPresent(std::uint32_t& errorCode, const std::wstring& /*label*/) {
  const std::optional<std::string> path = GetLaunchAgentPath(errorCode);
  return path && platform::SizeOf(*path).value_or(0) > 0;
}

}  // namespace esd
