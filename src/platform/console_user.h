// The user who sits at the machine's screen and keyboard.
#ifndef PLATFORM_CONSOLE_USER_H_
#define PLATFORM_CONSOLE_USER_H_

#include <cstdint>
#include <optional>

namespace platform {

/// A user by the numbers that the system knows users by.
struct ConsoleUser {
  std::uint32_t uid;  ///< as seteuid(2) takes it
  std::uint32_t gid;  ///< the user's primary group
};

/// The console user, or nothing where nobody is logged on at a console. Nothing is cached.
std::optional<ConsoleUser> FindConsoleUser();

}  // namespace platform

#endif  // PLATFORM_CONSOLE_USER_H_
