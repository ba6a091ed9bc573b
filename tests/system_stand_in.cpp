#include "tests/system_stand_in.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/statvfs.h>
#include <systemd/sd-login.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace test {

SystemStandIn& System() {
  static SystemStandIn system;
  return system;
}

}  // namespace test

extern "C" {

int access(const char* path, int mode) noexcept {
  if (std::string_view(path) != "/run/systemd/seats/seat0") {
    return faccessat(AT_FDCWD, path, mode, 0);
  }
  errno = ENOENT;
  return test::System().has_seat ? 0 : -1;
}

int sd_seat_get_active(const char* seat, char** session, uid_t* uid) {
  if (seat == nullptr || std::string_view(seat) != "seat0" || session != nullptr) return -EINVAL;
  if (!test::System().active_user) return -ENODATA;
  *uid = *test::System().active_user;
  return 0;
}

int getpwuid_r(uid_t uid, passwd* entry, char* texts, size_t size, passwd** found) {
  test::SystemStandIn& system = test::System();
  system.looked_up_as.push_back(geteuid());
  if (system.looked_up_as.size() == system.throwing_look_up) throw std::runtime_error("look-up");
  *found = nullptr;
  const auto user = system.users.find(uid);
  if (user == system.users.end()) return 0;
  std::snprintf(texts, size, "%s", user->second.home.c_str());
  *entry = {};
  entry->pw_uid = uid;
  entry->pw_gid = user->second.gid;
  entry->pw_dir = texts;
  *found = entry;
  return 0;
}

int statvfs(const char* path, struct statvfs* volume) noexcept {
  char* const resolved = realpath(path, nullptr);
  if (resolved == nullptr) return -1;
  const std::string& locked = test::System().locked_volume;
  *volume = {};
  volume->f_flag =
      !locked.empty() && std::string_view(resolved).starts_with(locked) ? ST_RDONLY : 0;
  free(resolved);
  return 0;
}

}  // extern "C"
