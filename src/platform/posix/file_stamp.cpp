#include <sys/stat.h>

#include "platform/file_attributes.h"
#include "platform/posix/content_time.h"

namespace platform {

FileStamp StampOf(const struct stat& status) {
  const timespec& time = ContentTime(status);
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

}  // namespace platform
