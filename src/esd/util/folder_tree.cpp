#include "esd/util/folder_tree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "esd/util/file_info.h"
#include "esd/util/path.h"

namespace esd {
namespace {

bool CreateFolderIn(const std::string& parent, const std::string& name,
                    std::optional<mode_t> mode) {
  if (name.empty()) return false;
  struct stat parents {};
  const bool parent_is_known = stat(parent.c_str(), &parents) == 0;
  const platform::FileDescriptor folder = MakePrivateFolder(JoinPath(parent, name));
  if (!folder) return errno == EEXIST;
  if (parent_is_known) {
    fchmod(folder.number(), parents.st_mode & 07777);
    // Without the right to give folders away the new one stays the user's own, which is no failure.
    [[maybe_unused]] const int ignored = fchown(folder.number(), parents.st_uid, parents.st_gid);
  }
  return !mode || fchmod(folder.number(), *mode) == 0;
}

}  // namespace

platform::FileDescriptor MakePrivateFolder(const std::string& path) {
  // A mask that takes the owner's rights away would keep the folder from being opened.
  const mode_t mask = umask(077);
  const bool made = mkdir(path.c_str(), 0700) == 0;
  umask(mask);
  if (!made) return platform::FileDescriptor();
  platform::FileDescriptor folder(
      open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  // The group bit that some folders pass on goes.
  if (folder && fchmod(folder.number(), 0700) != 0) folder.Close();
  return folder;
}

bool CreateFolderTree(const std::string& path, std::optional<mode_t> mode) {
  const std::string parent = GetParentFolder(path);
  if (parent == path) return false;
  if (!ObjectExistsAtPath(parent) && !CreateFolderTree(parent)) return false;
  return CreateFolderIn(parent, GetLastPathComponent(path), mode);
}

}  // namespace esd
