#include "platform/folders.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/file_type.h"
#include "platform/folder_making.h"
#include "platform/password_entry.h"
#include "platform/posix/standard_folder.h"

namespace platform {
namespace {

std::string Environment(const char* name) {
  const char* value = secure_getenv(name);
  return value != nullptr ? value : "";
}

std::string UserTemporaryFolder() {
  const std::string folder = Environment("TMPDIR");
  return folder.empty() ? "/tmp" : folder;
}

std::optional<std::string> PathOf(FolderDomain domain, FolderType type) {
  const bool is_temporary = type == kPerUserTemporaryFolderType || type == kUserTemporaryFolderType;
  if (is_temporary && domain == FolderDomain::kUser) return UserTemporaryFolder();
  return StandardFolder(domain, type, Environment("WAKERLY_ROOT"), HomeFolder());
}

bool MakeFolder(const std::string& path) {
  if (!MakesFolders()) return CouldMakeFolder(path);
  std::error_code ignored;
  std::filesystem::create_directories(path, ignored);
  return TypeOf(path) == FileType::kFolder;
}

}  // namespace

std::optional<std::string> FindFolder(FolderDomain domain, FolderType type, bool create,
                                      std::size_t path_size) {
  std::optional<std::string> path = PathOf(domain, type);
  if (!path) return std::nullopt;
  if (TypeOf(*path) != FileType::kFolder && !(create && MakeFolder(*path))) return std::nullopt;
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
