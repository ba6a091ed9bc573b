#include "platform/folder_making.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/file_type.h"

namespace platform {
namespace {

bool g_makes_folders = true;

// Ends with no "/", which would have a link followed and a file be nothing at all.
std::string FolderAbove(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  const std::size_t end = path.find_last_not_of('/', slash);
  return end == std::string::npos ? "/" : path.substr(0, end + 1);
}

}  // namespace

void OnlyPretendToMakeFolders() { g_makes_folders = false; }

bool MakesFolders() { return g_makes_folders; }

bool CouldMakeFolder(std::string path) {
  if (TypeOf(path) == FileType::kFolder) return true;
  // What stands there and is no folder, a link to nothing too, keeps one from being made.
  while (!path.empty() && TypeOfLink(path) == FileType::kNone) path = FolderAbove(path);
  return TypeOf(path) == FileType::kFolder &&
         faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

}  // namespace platform
