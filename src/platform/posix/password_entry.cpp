#include "platform/password_entry.h"

#include <pwd.h>

#include <array>

namespace platform {

std::optional<PasswordEntry> FindPasswordEntry(std::uint32_t uid) {
  std::array<char, 16384> texts{};
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(uid, &entry, texts.data(), texts.size(), &found) != 0 || found == nullptr) {
    return std::nullopt;
  }
  return PasswordEntry{found->pw_name, found->pw_gid, found->pw_dir};
}

}  // namespace platform
