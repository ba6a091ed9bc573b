#include "esd/util/delete_path.h"

#include <fcntl.h>
#include <fts.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "platform/file_attributes.h"
#include "platform/file_type.h"

namespace esd {
namespace {

bool DeleteTree(std::string path) {
  char* roots[] = {path.data(), nullptr};
  const std::unique_ptr<FTS, decltype(&fts_close)> walk(
      fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR, nullptr), &fts_close);
  if (!walk) return false;
  while (const FTSENT* item = fts_read(walk.get())) {
    // A folder comes twice: before its content, and after it.
    if (item->fts_info == FTS_D) continue;
    platform::ClearLocked(item->fts_accpath);
    remove(item->fts_accpath);
  }
  // Whatever could not be removed keeps the folders above it.
  return !platform::IsFound(platform::TypeOfLink(path));
}

std::string FolderOf(const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  return folder.empty() ? "." : folder;
}

bool IsVolumeReadOnly(const std::string& path) {
  // A link may point to another volume or nowhere; its folder holds it.
  struct statvfs volume {};
  if (statvfs(FolderOf(path).c_str(), &volume) != 0) return false;
  return (volume.f_flag & ST_RDONLY) != 0;
}

bool IsInGroup(gid_t group) {
  if (group == getegid()) return true;
  const int count = getgroups(0, nullptr);
  std::vector<gid_t> groups(count > 0 ? static_cast<std::size_t>(count) : 0);
  const int filled = getgroups(static_cast<int>(groups.size()), groups.data());
  return filled > 0 && std::find(groups.begin(), groups.end(), group) != groups.end();
}

bool MayWrite(const struct stat& status) {
  if (geteuid() == 0) return true;
  if (status.st_uid == geteuid()) return (status.st_mode & S_IWUSR) != 0;
  if (IsInGroup(status.st_gid)) return (status.st_mode & S_IWGRP) != 0;
  return true;
}

bool IsDeletable(const std::string& path, const struct stat& status) {
  return !S_ISDIR(status.st_mode) && !platform::IsLocked(path) && !IsVolumeReadOnly(path) &&
         MayWrite(status);
}

}  // namespace

bool DeleteFile(const std::string& path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return true;
  return IsDeletable(path, status) && remove(path.c_str()) == 0;
}

bool CouldDeleteFile(const std::string& path) {
  struct stat status {};
  struct stat folder {};
  if (lstat(path.c_str(), &status) != 0) return true;
  const std::string above = FolderOf(path);
  if (!IsDeletable(path, status) || stat(above.c_str(), &folder) != 0) return false;
  // In a sticky folder (unlink(2)) only the owners of the file and of the folder remove it.
  const uid_t user = geteuid();
  const bool sticks = (folder.st_mode & S_ISVTX) != 0 && user != 0 && user != folder.st_uid &&
                      user != status.st_uid;
  return !sticks && faccessat(AT_FDCWD, above.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool DeletePath(const std::string& given_path) {
  // A "/" behind a link's name would name what the link points to.
  const std::string path = given_path.substr(0, given_path.find_last_not_of('/') + 1);
  if (path.empty()) return given_path.empty();
  return platform::TypeOfLink(path) == platform::FileType::kFolder ? DeleteTree(path)
                                                                   : DeleteFile(path);
}

}  // namespace esd
