#include "ctl/user_name.h"

#include "platform/password_entry.h"

namespace ctl {

std::string UserName(uid_t uid) {
  const std::optional<platform::PasswordEntry> entry = platform::FindPasswordEntry(uid);
  return entry ? entry->name : std::to_string(uid);
}

}  // namespace ctl
