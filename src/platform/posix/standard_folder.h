// Where the standard folders lie in a folder tree of macOS's shape.
#ifndef PLATFORM_POSIX_STANDARD_FOLDER_H_
#define PLATFORM_POSIX_STANDARD_FOLDER_H_

#include <optional>
#include <string>

#include "platform/folders.h"

namespace platform {

/// The path of a standard folder below `root`, or below `home` for the user's; whether it stands is
/// not looked at. Nothing when the domain has no such folder, and for the user's without a home.
std::optional<std::string> StandardFolder(FolderDomain domain, FolderType type,
                                          const std::string& root, const std::string& home);

}  // namespace platform

#endif  // PLATFORM_POSIX_STANDARD_FOLDER_H_
