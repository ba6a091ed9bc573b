#include "platform/file_attributes.h"

#include <copyfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

// What the system shows as "locked": chflags(2).
constexpr std::uint32_t kLockedFlags = UF_IMMUTABLE | SF_IMMUTABLE;

std::uint32_t Flags(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 ? status.st_flags : 0;
}

}  // namespace

FileStamp StampOf(const struct stat& status) {
  const timespec& time = status.st_mtimespec;
  const std::uint64_t nanoseconds = time.tv_sec < 0
                                        ? 0
                                        : static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000U +
                                              static_cast<std::uint64_t>(time.tv_nsec);
  return {nanoseconds, static_cast<std::uint64_t>(status.st_dev), status.st_ino,
          static_cast<std::uint64_t>(status.st_size)};
}

std::optional<FileStamp> StampOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return StampOf(status);
}

std::optional<FileStamp> StampOf(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return std::nullopt;
  return StampOf(status);
}

bool CopyAclAndAttributes(int from, int to) {
  return fcopyfile(from, to, nullptr, COPYFILE_ACL | COPYFILE_XATTR) == 0;
}

bool IsLocked(const std::string& path) { return (Flags(path) & kLockedFlags) != 0; }

bool ClearLocked(const std::string& path) {
  const std::uint32_t flags = Flags(path);
  return (flags & kLockedFlags) == 0 || lchflags(path.c_str(), flags & ~kLockedFlags) == 0;
}

}  // namespace platform
