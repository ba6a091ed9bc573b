// Well-known folders and product folders by number, and a bundle's version.
#ifndef WELKO_FOLDER_PATH_H_
#define WELKO_FOLDER_PATH_H_

#include <string>

#include "platform/folders.h"

namespace welko {

/// The numbers that GetFolderPath knows. "Local" is the whole machine's, "console user" the user's
/// who sits at it.
enum FolderId : unsigned {
  kFolderApplications = 0,
  kFolderLocalAppSupport = 2,
  kFolderLocalAppSupportAlias = 3,  ///< the same folder as number 2
  kFolderHome = 9,                  ///< of the user the process acts as
  kFolderConsoleUserDocuments = 10,
  kFolderConsoleUserAppSupport = 12,
  kFolderSharedUserData = 13,
  kFolderTemp = 15,
  kFolderOwnBundle = 16,
  kFolderOwnBundleParent = 17,
  kFolderVantreAppSupport = 18,
  kFolderVantreUserAppSupport = 19,
  kFolderVantreSharedData = 20,
  kFolderWelkoAppSupport = 21,
  kFolderWelkoUserAppSupport = 22,
  kFolderWelkoSharedData = 23,
  kFolderOrlanUtilities = 24,
  kFolderTarnikAppSupport = 25,
  kFolderTarnikUserAppSupport = 26,
  kFolderOrlanRefs = 27,
  kFolderPeltRefs = 28,
  kFolderDesktopCommon = 29,
  kFolderLumoraUtilities = 30,
  kFolderLocalPreferences = 31,
  kFolderConsoleUserLogs = 32,
};

/// Gives in `out` the path of the folder `folderId`; ids 24 and 30 end in "/".
///
/// False, and `out` untouched, for a number without a folder, for the standard folders 0, 2, 3 and
/// 31 when the system does not find them, and for 32 when it cannot be made. Every other id is true
/// even when the system's folder below it is not found: `out` then keeps what it held, with the
/// product's part of the path appended to it.
bool GetFolderPath(unsigned folderId, std::string& out);

/// The path of the desktop suite's application, whether or not it is installed. Without the
/// machine's folder for utilities it begins with the product's own folder.
std::string DesktopSuitePath();

/// Gives in `out` the system's folder of that domain and type, made when it is missing.
/// False, and `out` untouched, when there is none or its path has 1024 bytes or more.
bool FindSystemFolder(platform::FolderDomain domain, platform::FolderType folderType,
                      std::string& out);

/// Gives in `out` the short version that the Info.plist of the bundle at `bundlePath` names.
/// False, and `out` untouched, when there is no such file or it names none.
bool GetBundleShortVersion(const std::string& bundlePath, std::string& out);

}  // namespace welko

#endif  // WELKO_FOLDER_PATH_H_
