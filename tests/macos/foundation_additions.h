// What Foundation has on macOS and GNUstep's declares not.
#ifndef TESTS_MACOS_FOUNDATION_ADDITIONS_H_
#define TESTS_MACOS_FOUNDATION_ADDITIONS_H_

#import <Foundation/Foundation.h>

typedef struct {
  NSInteger majorVersion, minorVersion, patchVersion;
} NSOperatingSystemVersion;

@interface NSProcessInfo (OperatingSystemVersion)
- (NSOperatingSystemVersion)operatingSystemVersion;
@end

#endif  // TESTS_MACOS_FOUNDATION_ADDITIONS_H_
