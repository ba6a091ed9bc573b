// The running system's version.
#ifndef PLATFORM_SYSTEM_VERSION_H_
#define PLATFORM_SYSTEM_VERSION_H_

#include <optional>

namespace platform {

/// The three numbers of, for example, 10.13.6.
struct SystemVersion {
  long major_number = 0;  ///< 10
  long minor_number = 0;  ///< 13
  long patch_number = 0;  ///< 6, and 0 in a version without a third number
};

/// The system's version, or nothing when the system does not tell.
std::optional<SystemVersion> FindSystemVersion();

}  // namespace platform

#endif  // PLATFORM_SYSTEM_VERSION_H_
