#include "driver/home_owner.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "platform/password_entry.h"

namespace wakerly {
namespace {

// The group calls take their counts and ids in types of each system's own.
template <typename Count>
bool SetGroups(int (*set)(Count, const gid_t*), const std::vector<gid_t>& groups) {
  return set(static_cast<Count>(groups.size()), groups.data()) == 0;
}
template <typename Group>
bool InitGroups(int (*init)(const char*, Group), const char* user, gid_t group) {
  return init(user, static_cast<Group>(group)) == 0;
}

std::vector<gid_t> Groups() {
  const int count = getgroups(0, nullptr);
  std::vector<gid_t> groups(count > 0 ? static_cast<std::size_t>(count) : 0);
  if (!groups.empty() && getgroups(count, groups.data()) != count) groups.clear();
  return groups;
}

// Takes the groups of the owner of `home`: those of the password entry, else the folder's.
bool TakeGroups(const struct stat& home) {
  const std::optional<platform::PasswordEntry> entry = platform::FindPasswordEntry(home.st_uid);
  if (!entry) return SetGroups(setgroups, {home.st_gid}) && setgid(home.st_gid) == 0;
  return InitGroups(initgroups, entry->name.c_str(), entry->gid) && setgid(entry->gid) == 0;
}

// Of a program that was started set-user-ID, whoever started it chose the variable.
bool FindForeignHome(struct stat& home) {
  const char* path = std::getenv("HOME");
  return geteuid() == 0 && getuid() == 0 && path != nullptr && stat(path, &home) == 0 &&
         S_ISDIR(home.st_mode) && home.st_uid != 0;
}

}  // namespace

std::optional<uid_t> BecomeHomeOwner() {
  struct stat home {};
  if (!FindForeignHome(home)) return std::nullopt;
  const std::vector<gid_t> groups = Groups();
  const gid_t group = getegid();
  // For root, setgid and setuid change the real, the effective and the saved id.
  if (TakeGroups(home) && setuid(home.st_uid) == 0) return home.st_uid;
  SetGroups(setgroups, groups);
  [[maybe_unused]] const int ignored = setgid(group);
  return std::nullopt;
}

}  // namespace wakerly
