#include "platform/folder_making.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/file_type.h"

namespace platform {
namespace {

bool g_makes_folders = true;

}  // namespace

void OnlyPretendToMakeFolders() { g_makes_folders = false; }

bool MakesFolders() { return g_makes_folders; }

bool CouldMakeFolder(std::string path) {
  if (TypeOf(path) == FileType::kFolder) return true;
  // What stands there and is no folder, a link to nothing too, keeps one from being made.
  while (!path.empty() && TypeOfLink(path) == FileType::kNone) {
    path.resize(path.find_last_not_of('/') + 1);
    path.resize(path.rfind('/') + 1);
  }
  return TypeOf(path) == FileType::kFolder &&
         faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

}  // namespace platform
