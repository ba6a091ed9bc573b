#include "platform/semaphore_name.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

#include "platform/file_descriptor.h"

namespace platform {
namespace {

// The C library keeps the semaphore "/name" as this file, and nobody writes to one that is a lock.
bool LookAt(const std::string& name, struct stat& status) {
  return stat(("/dev/shm/sem." + name.substr(1)).c_str(), &status) == 0;
}

}  // namespace

// sem_overview(7): a leading slash and none after it.
std::string SemaphoreName(std::string name) {
  std::replace(name.begin(), name.end(), '/', '_');
  return "/" + name;
}

std::optional<SemaphoreOrigin> FindSemaphoreOrigin(const std::string& name) {
  struct stat status {};
  if (!LookAt(name, status)) return std::nullopt;
  return SemaphoreOrigin{status.st_uid, status.st_mtim.tv_sec};
}

// An open semaphore is mapped into memory: proc(5) gives device and inode of what is. The name that
// it gives is the one that the file had while it was being made.
bool MayHaveSemaphoreOpen(std::int64_t process, const std::string& name) {
  constexpr std::size_t kLargest = 64U << 20U;
  struct stat status {};
  if (!LookAt(name, status)) return true;
  const auto maps = ReadRegularFile("/proc/" + std::to_string(process) + "/maps", kLargest);
  // One that is over has nothing open.
  if (!maps) return errno != ENOENT && errno != ESRCH;
  std::array<char, 64> file{};
  std::snprintf(file.data(), file.size(), " %02x:%02x %ju ", major(status.st_dev),
                minor(status.st_dev), static_cast<std::uintmax_t>(status.st_ino));
  return maps->find(file.data()) != std::string::npos;
}

}  // namespace platform
