#include "platform/file_attributes.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <sstream>
#include <vector>

#include "platform/posix/content_time.h"

namespace platform {
namespace {

using Names = std::vector<std::string>;

// The names of a file's extended attributes; none where its file system has no such thing.
std::optional<Names> AttributeNames(int file) {
  Names names;
  const ssize_t room = flistxattr(file, nullptr, 0);
  if (room < 0 && errno != ENOTSUP) return std::nullopt;
  if (room <= 0) return names;
  std::string list(static_cast<std::size_t>(room), '\0');
  const ssize_t size = flistxattr(file, list.data(), list.size());
  if (size < 0) return std::nullopt;
  std::istringstream text(list.substr(0, static_cast<std::size_t>(size)));
  for (std::string name; std::getline(text, name, '\0');) names.push_back(name);
  return names;
}

std::optional<std::string> Attribute(int file, const std::string& name) {
  std::string value(XATTR_SIZE_MAX, '\0');
  const ssize_t size = fgetxattr(file, name.c_str(), value.data(), value.size());
  if (size < 0) return std::nullopt;
  value.resize(static_cast<std::size_t>(size));
  return value;
}

// Whoever may not set an attribute may find it set already, by the rules of the file system.
bool CopyAttribute(int from, int to, const std::string& name) {
  const std::optional<std::string> value = Attribute(from, name);
  return value && (Attribute(to, name) == value ||
                   fsetxattr(to, name.c_str(), value->data(), value->size(), 0) == 0);
}

}  // namespace

const timespec& ContentTime(const struct stat& status) { return status.st_mtim; }

// The ACL is an attribute, too: acl(5). A new file may have got one from its folder.
bool CopyAclAndAttributes(int from, int to) {
  const std::optional<Names> wanted = AttributeNames(from);
  const std::optional<Names> present = AttributeNames(to);
  if (!wanted || !present) return false;
  for (const std::string& name : *present) {
    const bool stays = std::count(wanted->begin(), wanted->end(), name) != 0;
    if (!stays && fremovexattr(to, name.c_str()) != 0) return false;
  }
  return std::all_of(wanted->begin(), wanted->end(),
                     [&](const std::string& name) { return CopyAttribute(from, to, name); });
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
