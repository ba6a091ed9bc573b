#include "platform/system_version.h"

#import <CoreServices/CoreServices.h>
#import <Foundation/Foundation.h>
#include <dlfcn.h>

namespace platform {
namespace {

// Looked up late: no system that we run on needs it, and one without it must load us all the same.
std::optional<SystemVersion> AskGestalt() {
  const auto gestalt = reinterpret_cast<decltype(&Gestalt)>(dlsym(RTLD_DEFAULT, "Gestalt"));
  SInt32 numbers[3] = {};
  if (gestalt == nullptr || gestalt('sys1', &numbers[0]) != noErr ||
      gestalt('sys2', &numbers[1]) != noErr || gestalt('sys3', &numbers[2]) != noErr) {
    return std::nullopt;
  }
  return SystemVersion{numbers[0], numbers[1], numbers[2]};
}

}  // namespace

std::optional<SystemVersion> FindSystemVersion() {
  @autoreleasepool {
    NSProcessInfo* process = [NSProcessInfo processInfo];
    if ([process respondsToSelector:@selector(operatingSystemVersion)]) {
      const NSOperatingSystemVersion version = [process operatingSystemVersion];
      return SystemVersion{version.majorVersion, version.minorVersion, version.patchVersion};
    }
  }
  return AskGestalt();
}

}  // namespace platform
