// The operating system's standard folders, and the home folder.
//
// A look-up names a domain and a four-character folder type, as File Manager does. Nothing is
// cached: every call looks again. What a product keeps below these folders is not known here.
#ifndef PLATFORM_FOLDERS_H_
#define PLATFORM_FOLDERS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// Whose folder is asked for: that of the user the process acts as, or that of the whole machine.
/// Values: File Manager's kUserDomain and kLocalDomain (Folders.h).
enum class FolderDomain : std::int16_t { kUser = -32763, kLocal = -32765 };

/// A four-character code, first character in the highest byte.
using FolderType = std::uint32_t;

/// The code that File Manager writes as `text`, such as "asup"; bytes above 127 are Mac OS Roman.
constexpr FolderType FourCharCode(const char (&text)[5]) {
  FolderType code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<unsigned char>(text[i]);
  return code;
}

/// The folders that can be asked for; not every domain has each. Values: Folders.h of CoreServices.
///@{
inline constexpr FolderType kRootFolderType = FourCharCode("root");
inline constexpr FolderType kDesktopFolderType = FourCharCode("desk");
inline constexpr FolderType kDocumentsFolderType = FourCharCode("docs");
inline constexpr FolderType kCachedDataFolderType = FourCharCode("cach");
inline constexpr FolderType kPreferencesFolderType = FourCharCode("pref");
inline constexpr FolderType kApplicationSupportFolderType = FourCharCode("asup");
inline constexpr FolderType kFontsFolderType = FourCharCode("font");
inline constexpr FolderType kSystemFolderType = FourCharCode("macs");
inline constexpr FolderType kApplicationsFolderType = FourCharCode("apps");
inline constexpr FolderType kUtilitiesFolderType = FourCharCode("uti\xC4");
inline constexpr FolderType kSharedUserDataFolderType = FourCharCode("sdat");
inline constexpr FolderType kPerUserTemporaryFolderType = FourCharCode("flnt");
inline constexpr FolderType kUserTemporaryFolderType = FourCharCode("utmp");
///@}

/// Room for a path of any length.
inline constexpr std::size_t kAnySize = 0;

/// The path of a standard folder.
/// Nothing when the domain has no such folder, when it is missing and `create` is false, when it
/// cannot be made, or when its path takes more than `path_size` bytes with a terminating zero. With
/// `create` a missing folder is made together with its parents.
std::optional<std::string> FindFolder(FolderDomain domain, FolderType type, bool create,
                                      std::size_t path_size = kAnySize);

/// The home folder of the user the process acts as; empty when it is not known. It need not exist.
std::string HomeFolder();

}  // namespace platform

#endif  // PLATFORM_FOLDERS_H_
