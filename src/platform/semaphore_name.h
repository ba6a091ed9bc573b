// Names of POSIX named semaphores, as this system wants them.
#ifndef PLATFORM_SEMAPHORE_NAME_H_
#define PLATFORM_SEMAPHORE_NAME_H_

#include <string>

namespace platform {

/// The form of `name` that sem_open(3) and sem_unlink(3) take here; the same for the same name
/// always.
std::string SemaphoreName(std::string name);

/// The shell command by which a user removes the semaphore of that name, as SemaphoreName gave it.
std::string SemaphoreRemoval(const std::string& name);

}  // namespace platform

#endif  // PLATFORM_SEMAPHORE_NAME_H_
