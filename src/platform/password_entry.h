// One user's entry in the password database.
#ifndef PLATFORM_PASSWORD_ENTRY_H_
#define PLATFORM_PASSWORD_ENTRY_H_

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// What callers ask of it.
struct PasswordEntry {
  std::string name;
  std::uint32_t gid;  ///< of the user's primary group
  std::string home;
};

/// The entry of `uid`, or nothing when there is none or it cannot be read. With getpwuid_r(3).
std::optional<PasswordEntry> FindPasswordEntry(std::uint32_t uid);

}  // namespace platform

#endif  // PLATFORM_PASSWORD_ENTRY_H_
