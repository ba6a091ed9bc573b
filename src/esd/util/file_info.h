// Questions about one file or folder, and its permission bits.
//
// Every operation follows symbolic links, and answers false when the object does not exist.
#ifndef ESD_UTIL_FILE_INFO_H_
#define ESD_UTIL_FILE_INFO_H_

#include <cstdint>
#include <string>

namespace esd {

/// Whether `path` resolves to an existing file or folder.
bool ObjectExistsAtPath(const std::string& path);

/// Gives in `stamp` when the object's content last changed, in nanoseconds since the epoch.
/// On false `stamp` is untouched.
bool GetModificationStamp(const std::string& path, std::uint64_t& stamp);

/// Gives in `mode` the object's permission bits, the low 12 of its POSIX mode.
/// On false `mode` is untouched.
bool GetPermissionMode(const std::string& path, std::uint16_t& mode);

/// Adds `bits` to the object's permission bits; those it has stay.
bool AddPermissionBits(const std::string& path, std::uint16_t bits);

/// Lets the owner's group write: a folder gets mode 0775, anything else 0664.
bool MakeSharedWritable(const std::string& path);

}  // namespace esd

#endif  // ESD_UTIL_FILE_INFO_H_
