// The well-known folders that the updater's files live in, by number.
#ifndef ESD_UTIL_SPECIAL_FOLDER_H_
#define ESD_UTIL_SPECIAL_FOLDER_H_

#include <string>

namespace esd {

/// Gives in `path` the folder of `kind`; with `create` a missing one is made. False, and `path`
/// untouched, for a kind above 14 and for a folder that is missing or cannot be made.
///
/// Kinds of the user: 0 and 1 temporary, 3 desktop, 4 documents, 5 caches, 6 preferences and
/// 7 application support. Kinds of the machine: 2 temporary, 8, 9 and 13 application support,
/// 10 fonts, 11 and 12 system. Kind 14 is "/".
bool GetSpecialFolder(unsigned kind, std::string& path, bool create);

}  // namespace esd

#endif  // ESD_UTIL_SPECIAL_FOLDER_H_
