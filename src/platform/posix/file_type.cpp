#include "platform/file_type.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

namespace platform {
namespace {

// `result` is that of the stat(2) or lstat(2) that filled `status`, and errno still its own.
FileType TypeFrom(int result, const struct stat& status) {
  if (result != 0) {
    return errno == ENOENT || errno == ENOTDIR ? FileType::kNone : FileType::kUnknown;
  }
  if (S_ISREG(status.st_mode)) return FileType::kRegular;
  if (S_ISDIR(status.st_mode)) return FileType::kFolder;
  return S_ISLNK(status.st_mode) ? FileType::kSymbolicLink : FileType::kOther;
}

}  // namespace

FileType TypeOf(const std::string& path) {
  struct stat status {};
  const int result = stat(path.c_str(), &status);
  return TypeFrom(result, status);
}

FileType TypeOfLink(const std::string& path) {
  struct stat status {};
  const int result = lstat(path.c_str(), &status);
  return TypeFrom(result, status);
}

bool IsOtherThanFile(const std::string& path) {
  const FileType type = TypeOf(path);
  return IsFound(type) && type != FileType::kRegular;
}

std::optional<LinkEnd> FollowLinks(std::string path) {
  constexpr int kMostLinks = 40;  // as Linux: path_resolution(7)
  for (int links = 0; links < kMostLinks; ++links) {
    const FileType type = TypeOfLink(path);
    if (type != FileType::kSymbolicLink) return LinkEnd{path, type};
    char target[PATH_MAX];
    const ssize_t size = readlink(path.c_str(), target, sizeof target);
    if (size <= 0 || size == sizeof target) return std::nullopt;
    path.resize(target[0] == '/' ? 0 : path.rfind('/') + 1);
    path.append(target, static_cast<std::size_t>(size));
  }
  return std::nullopt;
}

std::optional<std::int64_t> SizeOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return status.st_size;
}

}  // namespace platform
