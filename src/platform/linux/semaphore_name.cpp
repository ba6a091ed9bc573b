#include "platform/semaphore_name.h"

#include <algorithm>

namespace platform {

// sem_overview(7): a leading slash and none after it.
std::string SemaphoreName(std::string name) {
  std::replace(name.begin(), name.end(), '/', '_');
  return "/" + name;
}

// The C library keeps the semaphore "/name" as this file.
std::string SemaphoreRemoval(const std::string& name) {
  return "rm '/dev/shm/sem." + name.substr(1) + "'";
}

}  // namespace platform
