#include "esd/util/folder_tree.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "esd/util/file_info.h"
#include "esd/util/path.h"

namespace esd {
namespace {

bool CreateFolderIn(const std::string& parent, const std::string& name) {
  if (name.empty()) return false;
  const std::string path = JoinPath(parent, name);
  struct stat parents {};
  const bool parent_is_known = stat(parent.c_str(), &parents) == 0;
  if (mkdir(path.c_str(), 0777) != 0) return errno == EEXIST;
  if (parent_is_known) {
    chmod(path.c_str(), parents.st_mode & 07777);
    // Without the right to give folders away the new one stays the user's own, which is no failure.
    [[maybe_unused]] const int ignored = chown(path.c_str(), parents.st_uid, parents.st_gid);
  }
  return true;
}

}  // namespace

bool CreateFolderTree(const std::string& path) {
  const std::string parent = GetParentFolder(path);
  if (parent == path) return false;
  if (!ObjectExistsAtPath(parent) && !CreateFolderTree(parent)) return false;
  return CreateFolderIn(parent, GetLastPathComponent(path));
}

}  // namespace esd
