// Making a folder together with its missing ancestors.
#ifndef ESD_UTIL_FOLDER_TREE_H_
#define ESD_UTIL_FOLDER_TREE_H_

#include <sys/types.h>

#include <optional>
#include <string>

#include "platform/file_descriptor.h"

namespace esd {

/// Makes `path`, which is absolute and does not end in "/", and its missing ancestors; each new
/// folder takes its parent's permission bits, owner and group, the latter two where the process may
/// give them. With a `mode` the last one, if it is new, takes that instead of the bits. True also
/// when an object of that name stands there already. False for "/", when the system refuses, and
/// when a new folder does not take `mode`; what was made before that stays.
bool CreateFolderTree(const std::string& path, std::optional<mode_t> mode = std::nullopt);

/// Makes the folder `path` and opens it; it is the process's own, and open to nobody else whatever
/// the mask and the folder above. Not open, with errno telling why, when it is not made (EEXIST:
/// the name is taken) or not opened. What is changed by the descriptor is that folder, whoever else
/// moves it.
platform::FileDescriptor MakePrivateFolder(const std::string& path);

}  // namespace esd

#endif  // ESD_UTIL_FOLDER_TREE_H_
