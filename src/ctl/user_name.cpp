#include "ctl/user_name.h"

#include <pwd.h>

#include <array>

namespace ctl {

std::string UserName(uid_t uid) {
  std::array<char, 16384> texts{};
  passwd entry{};
  passwd* found = nullptr;
  getpwuid_r(uid, &entry, texts.data(), texts.size(), &found);
  return found != nullptr ? found->pw_name : std::to_string(uid);
}

}  // namespace ctl
