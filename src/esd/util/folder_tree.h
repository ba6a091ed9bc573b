// Making a folder together with its missing ancestors.
#ifndef ESD_UTIL_FOLDER_TREE_H_
#define ESD_UTIL_FOLDER_TREE_H_

#include <string>

namespace esd {

/// Makes `path`, which is absolute and does not end in "/", and its missing ancestors; each new
/// folder takes its parent's permission bits, owner and group, the latter two where the process may
/// give them. True also when an object of that name stands there already. False for "/" and when
/// the system refuses; ancestors made before that stay.
bool CreateFolderTree(const std::string& path);

}  // namespace esd

#endif  // ESD_UTIL_FOLDER_TREE_H_
