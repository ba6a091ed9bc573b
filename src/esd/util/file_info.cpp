#include "esd/util/file_info.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <ctime>
#include <optional>

#include "platform/file_attributes.h"
#include "platform/file_type.h"

namespace esd {

bool ObjectExistsAtPath(const std::string& path) {
  return platform::IsFound(platform::TypeOf(path));
}

bool GetModificationStamp(const std::string& path, std::uint64_t& stamp) {
  const std::optional<std::uint64_t> time = platform::ModificationTime(path);
  if (time) stamp = *time;
  return time.has_value();
}

bool SetModificationStamp(const std::string& path, std::uint64_t stamp) {
  constexpr std::uint64_t kSecond = 1'000'000'000;
  const timespec times[] = {
      {0, UTIME_OMIT}, {static_cast<time_t>(stamp / kSecond), static_cast<long>(stamp % kSecond)}};
  return utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

bool GetPermissionMode(const std::string& path, std::uint16_t& mode) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return false;
  mode = status.st_mode & 07777;
  return true;
}

bool AddPermissionBits(const std::string& path, std::uint16_t bits) {
  std::uint16_t mode = 0;
  return GetPermissionMode(path, mode) && chmod(path.c_str(), (mode | bits) & 07777) == 0;
}

bool MakeSharedWritable(const std::string& path) {
  const bool is_folder = platform::TypeOf(path) == platform::FileType::kFolder;
  return chmod(path.c_str(), is_folder ? 0775 : 0664) == 0;
}

}  // namespace esd
