#include "platform/semaphore_name.h"

#include <sys/stat.h>

#include <algorithm>

namespace platform {

// sem_overview(7): a leading slash and none after it.
std::string SemaphoreName(std::string name) {
  std::replace(name.begin(), name.end(), '/', '_');
  return "/" + name;
}

// The C library keeps the semaphore "/name" as this file, and nobody writes to one that is a lock.
std::optional<SemaphoreOrigin> FindSemaphoreOrigin(const std::string& name) {
  struct stat status {};
  if (stat(("/dev/shm/sem." + name.substr(1)).c_str(), &status) != 0) return std::nullopt;
  return SemaphoreOrigin{status.st_uid, status.st_mtim.tv_sec};
}

}  // namespace platform
