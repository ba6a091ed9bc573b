// Whether the updater's scheduled task is installed for the current user.
#ifndef ESD_PREFS_LAUNCH_AGENT_H_
#define ESD_PREFS_LAUNCH_AGENT_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace esd {

/// The name of the launch agent's property list.
inline constexpr char kLaunchAgentName[] = "com.vantre.VantreOrlanUpdater-1.0.plist";

/// Writes the path of the user's LaunchAgents folder, ending in "/" and not normalised, to the
/// `bufferSize` bytes at `buffer`, cut where they end. False with `errorCode` 120 without a buffer
/// and 73 when the folder is not found; else `errorCode` is 0.
bool GetLaunchAgentsFolder(std::uint32_t& errorCode, char* buffer, std::size_t bufferSize,
                           bool create);

/// The path of the launch agent's property list in that folder. Nothing, and `errorCode` as above,
/// when the folder is not found.
std::optional<std::string> GetLaunchAgentPath(std::uint32_t& errorCode);

/// Whether the launch agent's property list stands there and is not empty, whatever
/// `label`. `errorCode` as above; a missing file leaves it 0.
bool IsScheduledTaskPresent(std::uint32_t& errorCode, const std::wstring& label);

}  // namespace esd

#endif  // ESD_PREFS_LAUNCH_AGENT_H_
