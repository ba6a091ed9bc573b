#include "platform/posix/standard_folder.h"

namespace platform {
namespace {

// Where a folder type lies below the home folder (user) and below the tree's root (local).
struct Place {
  FolderType type;
  const char* user;
  const char* local;
};

constexpr Place kPlaces[] = {
    {kRootFolderType, "", nullptr},
    {kDesktopFolderType, "/Desktop", nullptr},
    {kDocumentsFolderType, "/Documents", nullptr},
    {kCachedDataFolderType, "/Library/Caches", "/Library/Caches"},
    {kPreferencesFolderType, "/Library/Preferences", "/Library/Preferences"},
    {kApplicationSupportFolderType, "/Library/Application Support", "/Library/Application Support"},
    {kFontsFolderType, "/Library/Fonts", "/Library/Fonts"},
    {kSystemFolderType, nullptr, "/System"},
    {kApplicationsFolderType, "/Applications", "/Applications"},
    {kUtilitiesFolderType, "/Applications/Utilities", "/Applications/Utilities"},
    {kSharedUserDataFolderType, nullptr, "/Users/Shared"},
    {kPerUserTemporaryFolderType, nullptr, "/tmp"},
    {kUserTemporaryFolderType, nullptr, "/tmp"},
};

}  // namespace

std::optional<std::string> StandardFolder(FolderDomain domain, FolderType type,
                                          const std::string& root, const std::string& home) {
  const bool is_local = domain == FolderDomain::kLocal;
  for (const Place& place : kPlaces) {
    if (place.type != type) continue;
    const char* const suffix = is_local ? place.local : place.user;
    if (suffix == nullptr || (!is_local && home.empty())) return std::nullopt;
    return (is_local ? root : home) + suffix;
  }
  return std::nullopt;
}

}  // namespace platform
