#include "platform/file_attributes.h"

#include <copyfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/content_time.h"

namespace platform {
namespace {

// What the system shows as "locked": chflags(2).
constexpr std::uint32_t kLockedFlags = UF_IMMUTABLE | SF_IMMUTABLE;

std::uint32_t Flags(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 ? status.st_flags : 0;
}

}  // namespace

const timespec& ContentTime(const struct stat& status) { return status.st_mtimespec; }

bool CopyAclAndAttributes(int from, int to) {
  return fcopyfile(from, to, nullptr, COPYFILE_ACL | COPYFILE_XATTR) == 0;
}

bool IsLocked(const std::string& path) { return (Flags(path) & kLockedFlags) != 0; }

bool ClearLocked(const std::string& path) {
  const std::uint32_t flags = Flags(path);
  return (flags & kLockedFlags) == 0 || lchflags(path.c_str(), flags & ~kLockedFlags) == 0;
}

}  // namespace platform
