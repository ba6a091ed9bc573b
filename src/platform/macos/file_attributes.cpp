#include "platform/file_attributes.h"

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

std::optional<std::uint64_t> ModificationTime(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  if (status.st_mtimespec.tv_sec < 0) return 0;
  return static_cast<std::uint64_t>(status.st_mtimespec.tv_sec) * 1'000'000'000U +
         static_cast<std::uint64_t>(status.st_mtimespec.tv_nsec);
}

bool IsLocked(const std::string& path) { return (Flags(path) & kLockedFlags) != 0; }

bool ClearLocked(const std::string& path) {
  const std::uint32_t flags = Flags(path);
  return (flags & kLockedFlags) == 0 || lchflags(path.c_str(), flags & ~kLockedFlags) == 0;
}

}  // namespace platform
