// POSIX named semaphores: their names as this system wants them, and where one comes from.
#ifndef PLATFORM_SEMAPHORE_NAME_H_
#define PLATFORM_SEMAPHORE_NAME_H_

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// The form of `name` that sem_open(3) and sem_unlink(3) take here; the same for the same name
/// always.
std::string SemaphoreName(std::string name);

/// Who made a named semaphore, and when.
struct SemaphoreOrigin {
  std::uint32_t uid = 0;     ///< of its owner
  std::int64_t seconds = 0;  ///< since the epoch

  bool operator==(const SemaphoreOrigin&) const = default;
};

/// The origin of the semaphore of that name, as SemaphoreName gave it. Nothing where there is none,
/// and on a system that does not tell.
std::optional<SemaphoreOrigin> FindSemaphoreOrigin(const std::string& name);

/// Whether the process could have the existing semaphore of that name open: false only where the
/// system tells that it has not.
bool MayHaveSemaphoreOpen(std::int64_t process, const std::string& name);

}  // namespace platform

#endif  // PLATFORM_SEMAPHORE_NAME_H_
