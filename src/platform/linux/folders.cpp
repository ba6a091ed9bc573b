#include "platform/folders.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/linux/password_entry.h"

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

std::string Environment(const char* name) {
  const char* value = secure_getenv(name);
  return value != nullptr ? value : "";
}

std::string UserTemporaryFolder() {
  const std::string folder = Environment("TMPDIR");
  return folder.empty() ? "/tmp" : folder;
}

std::optional<std::string> PathOf(FolderDomain domain, FolderType type) {
  for (const Place& place : kPlaces) {
    if (place.type != type) continue;
    if (domain == FolderDomain::kLocal) {
      if (place.local == nullptr) return std::nullopt;
      return Environment("WAKERLY_ROOT") + place.local;
    }
    if (type == kPerUserTemporaryFolderType || type == kUserTemporaryFolderType) {
      return UserTemporaryFolder();
    }
    const std::string home = HomeFolder();
    if (place.user == nullptr || home.empty()) return std::nullopt;
    return home + place.user;
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> FindFolder(FolderDomain domain, FolderType type, bool create,
                                      std::size_t path_size) {
  std::optional<std::string> path = PathOf(domain, type);
  if (!path) return std::nullopt;
  std::error_code ignored;
  bool exists = std::filesystem::is_directory(*path, ignored);
  if (!exists && create) {
    std::filesystem::create_directories(*path, ignored);
    exists = std::filesystem::is_directory(*path, ignored);
  }
  if (!exists) return std::nullopt;
  if (path_size != kAnySize && path->size() >= path_size) return std::nullopt;
  return path;
}

std::string HomeFolder() {
  // While the process acts as another user, the environment still names the real user's home.
  std::string home = geteuid() == getuid() ? Environment("HOME") : "";
  if (!home.empty()) return home;
  const std::optional<PasswordEntry> entry = FindPasswordEntry(geteuid());
  return entry ? entry->home : "";
}

}  // namespace platform
