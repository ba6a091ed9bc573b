// Removing a file or a whole folder tree.
#ifndef ESD_UTIL_DELETE_PATH_H_
#define ESD_UTIL_DELETE_PATH_H_

#include <string>

namespace esd {

/// Removes what stands at `path`; true also when nothing is found there. A symbolic link is
/// removed itself, never what it points to, at the top and inside a tree.
///
/// A folder is removed with all that it holds, locked items included; what cannot be removed stays
/// and makes the result false. A single file stays, with the result false, when it or its volume is
/// locked, or when the process, not being root, has no write permission on it as its owner or a
/// member of its group.
bool DeletePath(const std::string& path);

/// The same for what is no folder. A folder stays, with the result false.
bool DeleteFile(const std::string& path);

/// Whether DeleteFile would be true, as far as a look at the file and its folder tells.
bool CouldDeleteFile(const std::string& path);

}  // namespace esd

#endif  // ESD_UTIL_DELETE_PATH_H_
