// The well-known folders that the updater's files live in, by number.
#ifndef ESD_UTIL_SPECIAL_FOLDER_H_
#define ESD_UTIL_SPECIAL_FOLDER_H_

#include <string>

namespace esd {

/// Gives in `path` the folder of `kind`, 0 to 14; with `create` a missing one is made. False, and
/// `path` untouched, for a kind above 14 and for a folder that is missing or cannot be made.
bool GetSpecialFolder(unsigned kind, std::string& path, bool create);

}  // namespace esd

#endif  // ESD_UTIL_SPECIAL_FOLDER_H_
