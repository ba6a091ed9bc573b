#include "tests/system_stand_in.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/statvfs.h>
#include <systemd/sd-login.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
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
  const bool is_seat = std::string_view(path) == "/run/systemd/seats/seat0";
  if (is_seat) return test::System().has_seat ? 0 : -1;
  return faccessat(AT_FDCWD, path, mode, 0);
}

int sd_seat_get_active(const char* seat, char** session, uid_t* uid) {
  if (seat == nullptr || std::string_view(seat) != "seat0" || session != nullptr) return -EINVAL;
  if (!test::System().active_user) return -ENODATA;
  *uid = *test::System().active_user;
  return 0;
}

int getpwuid_r(uid_t uid, passwd* entry, char* texts, size_t size, passwd** found) {
  if (test::System().look_ups_left-- == 0) throw std::runtime_error("look-up");
  *found = nullptr;
  const auto user = test::System().users.find(uid);
  if (user == test::System().users.end()) return 0;
  std::snprintf(texts, size, "%s", user->second.home.c_str());
  static char name[] = "someone";
  *entry = {};
  entry->pw_name = name;
  entry->pw_gid = user->second.gid;
  entry->pw_dir = texts;
  *found = entry;
  return 0;
}

int statvfs(const char* path, struct statvfs* volume) noexcept {
  std::error_code error;
  const std::string folder = std::filesystem::canonical(path, error);
  const std::string& locked = test::System().locked_volume;
  volume->f_flag = !locked.empty() && folder.starts_with(locked) ? ST_RDONLY : 0;
  return error ? -1 : 0;
}

}  // extern "C"
