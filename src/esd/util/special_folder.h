// The well-known folders that the updater's files live in, by number.
#ifndef ESD_UTIL_SPECIAL_FOLDER_H_
#define ESD_UTIL_SPECIAL_FOLDER_H_

#include <string>

namespace esd {

/// The kinds that GetSpecialFolder knows. "User" is the user that the process acts as, "local" the
/// whole machine. The kinds 8 and 9 are the same folder as 13, and 12 the same as 11.
enum SpecialFolder : unsigned {
  kPerUserTemporary = 0,  ///< may be another folder than 1
  kUserTemporary = 1,
  kLocalTemporary = 2,
  kUserDesktop = 3,
  kUserDocuments = 4,
  kUserCaches = 5,
  kUserPreferences = 6,
  kUserApplicationSupport = 7,
  kLocalFonts = 10,
  kLocalSystem = 11,
  kLocalApplicationSupport = 13,
  kRoot = 14,  ///< "/"
};

/// Gives in `path` the folder of `kind`, a SpecialFolder; with `create` a missing one is made.
/// False, and `path` untouched, for a kind above 14 and for a folder that is missing or cannot be
/// made.
bool GetSpecialFolder(unsigned kind, std::string& path, bool create);

}  // namespace esd

#endif  // ESD_UTIL_SPECIAL_FOLDER_H_
