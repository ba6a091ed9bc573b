#include "platform/system_version.h"

#import <CoreServices/CoreServices.h>
#import <Foundation/Foundation.h>

namespace platform {

std::optional<SystemVersion> FindSystemVersion() {
  @autoreleasepool {
    NSProcessInfo* process = [NSProcessInfo processInfo];
    if ([process respondsToSelector:@selector(operatingSystemVersion)]) {
      const NSOperatingSystemVersion version = [process operatingSystemVersion];
      return SystemVersion{version.majorVersion, version.minorVersion, version.patchVersion};
    }
  }
  SInt32 numbers[3] = {};
  if (Gestalt('sys1', &numbers[0]) != noErr || Gestalt('sys2', &numbers[1]) != noErr ||
      Gestalt('sys3', &numbers[2]) != noErr) {
    return std::nullopt;
  }
  return SystemVersion{numbers[0], numbers[1], numbers[2]};
}

}  // namespace platform
