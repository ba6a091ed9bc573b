// One user's entry in the password database.
#ifndef PLATFORM_LINUX_PASSWORD_ENTRY_H_
#define PLATFORM_LINUX_PASSWORD_ENTRY_H_

#include <sys/types.h>

#include <optional>
#include <string>

namespace platform {

struct PasswordEntry {
  gid_t gid;
  std::string home;
};

/// The entry of `uid`, or nothing when there is none or it cannot be read. With getpwuid_r(3).
std::optional<PasswordEntry> FindPasswordEntry(uid_t uid);

}  // namespace platform

#endif  // PLATFORM_LINUX_PASSWORD_ENTRY_H_
