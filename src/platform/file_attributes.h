// What a file system keeps about a file that POSIX has no one name for.
//
// A locked file cannot be changed or removed by anybody until the flag is cleared. None of these
// calls follows a symbolic link but StampOf.
#ifndef PLATFORM_FILE_ATTRIBUTES_H_
#define PLATFORM_FILE_ATTRIBUTES_H_

#include <cstdint>
#include <optional>
#include <string>

struct stat;

namespace platform {

/// Which object it is, when its content last changed, and how much that is.
struct FileStamp {
  std::uint64_t time = 0;    ///< in nanoseconds since the epoch, 0 for a time before
  std::uint64_t device = 0;  ///< the file system's number
  std::uint64_t inode = 0;   ///< the object's number there; given to others when it is gone
  std::uint64_t size = 0;    ///< in bytes
};

/// The stamp of the object at `path`, of the open file `descriptor`, or of what stat(2) gave.
/// Nothing, with errno telling why, when it cannot be looked at.
///@{
std::optional<FileStamp> StampOf(const std::string& path);
std::optional<FileStamp> StampOf(int descriptor);
FileStamp StampOf(const struct stat& status);
///@}

/// Gives the open file `to` the access control list and the extended attributes of the open file
/// `from`, whose owner and permission bits it has already. False when one cannot be read or given;
/// some may have been given then.
bool CopyAclAndAttributes(int from, int to);

/// Whether the object at `path` carries the locked flag; false when that cannot be read.
bool IsLocked(const std::string& path);

/// Clears the locked flag of the object at `path`. True when the object is not locked afterwards.
bool ClearLocked(const std::string& path);

}  // namespace platform

#endif  // PLATFORM_FILE_ATTRIBUTES_H_
