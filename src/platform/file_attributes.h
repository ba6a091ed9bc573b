// What a file system keeps about a file that POSIX has no one name for.
//
// A locked file cannot be changed or removed by anybody until the flag is cleared. None of these
// calls follows a symbolic link but ModificationTime.
#ifndef PLATFORM_FILE_ATTRIBUTES_H_
#define PLATFORM_FILE_ATTRIBUTES_H_

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// When the content of the object at `path` last changed, in nanoseconds since the epoch, 0 for a
/// time before; nothing when there is no such object.
std::optional<std::uint64_t> ModificationTime(const std::string& path);

/// Whether the object at `path` carries the locked flag; false when that cannot be read.
bool IsLocked(const std::string& path);

/// Clears the locked flag of the object at `path`. True when the object is not locked afterwards.
bool ClearLocked(const std::string& path);

}  // namespace platform

#endif  // PLATFORM_FILE_ATTRIBUTES_H_
