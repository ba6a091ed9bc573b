#include "platform/console_user.h"

#include <systemd/sd-login.h>
#include <unistd.h>

#include "platform/linux/late_library.h"
#include "platform/password_entry.h"

namespace platform {

std::optional<ConsoleUser> FindConsoleUser() {
  // systemd-logind keeps a file for each seat; without it there is nothing to load the library for.
  if (access("/run/systemd/seats/seat0", R_OK) != 0) return std::nullopt;
  const auto get_active =
      LateFunction<decltype(sd_seat_get_active)>("libsystemd.so.0", "sd_seat_get_active");
  uid_t uid = 0;
  if (get_active == nullptr || get_active("seat0", nullptr, &uid) < 0) return std::nullopt;

  const std::optional<PasswordEntry> entry = FindPasswordEntry(uid);
  if (!entry) return std::nullopt;
  return ConsoleUser{uid, entry->gid};
}

}  // namespace platform
