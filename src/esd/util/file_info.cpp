#include "esd/util/file_info.h"

#include <sys/stat.h>

#include <optional>

#include "platform/file_attributes.h"
#include "platform/file_type.h"

namespace esd {

bool ObjectExistsAtPath(const std::string& path) {
  return platform::IsFound(platform::TypeOf(path));
}

bool GetModificationStamp(const std::string& path, std::uint64_t& stamp) {
  const std::optional<platform::FileStamp> found = platform::StampOf(path);
  if (found) stamp = found->time;
  return found.has_value();
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
