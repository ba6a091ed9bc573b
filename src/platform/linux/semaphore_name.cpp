#include "platform/semaphore_name.h"

#include <algorithm>

namespace platform {

// sem_overview(7): a leading slash and none after it.
std::string SemaphoreName(std::string name) {
  std::replace(name.begin(), name.end(), '/', '_');
  return "/" + name;
}

}  // namespace platform
