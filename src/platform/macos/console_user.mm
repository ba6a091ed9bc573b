#include "platform/console_user.h"

#import <SystemConfiguration/SystemConfiguration.h>

namespace platform {

std::optional<ConsoleUser> FindConsoleUser() {
  uid_t uid = 0;
  gid_t gid = 0;
  const CFStringRef name = SCDynamicStoreCopyConsoleUser(nullptr, &uid, &gid);
  if (name == nullptr) return std::nullopt;
  CFRelease(name);
  return ConsoleUser{uid, gid};
}

}  // namespace platform
