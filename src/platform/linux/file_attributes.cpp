#include "platform/file_attributes.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

std::optional<std::uint64_t> ModificationTime(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  if (status.st_mtim.tv_sec < 0) return 0;
  return static_cast<std::uint64_t>(status.st_mtim.tv_sec) * 1'000'000'000U +
         static_cast<std::uint64_t>(status.st_mtim.tv_nsec);
}

// The immutable attribute of ioctl_iflags(2) is what a locked file is here; statx(2) tells it
// without opening the file.
bool IsLocked(const std::string& path) {
  struct statx status {};
  if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, 0, &status) != 0) return false;
  return (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
}

bool ClearLocked(const std::string& path) {
  if (!IsLocked(path)) return true;
  const int file = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return false;
  int flags = 0;
  bool cleared = ioctl(file, FS_IOC_GETFLAGS, &flags) == 0;
  flags &= ~FS_IMMUTABLE_FL;
  cleared = cleared && ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
  close(file);
  return cleared;
}

}  // namespace platform
