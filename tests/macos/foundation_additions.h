// What Foundation has on macOS and GNUstep's declares not.
#ifndef TESTS_MACOS_FOUNDATION_ADDITIONS_H_
#define TESTS_MACOS_FOUNDATION_ADDITIONS_H_

#ifdef __OBJC__
#import <Foundation/Foundation.h>

typedef struct {
  NSInteger majorVersion;
  NSInteger minorVersion;
  NSInteger patchVersion;
} NSOperatingSystemVersion;

@interface NSProcessInfo (OperatingSystemVersion)
- (NSOperatingSystemVersion)operatingSystemVersion;
@end
#endif

#endif  // TESTS_MACOS_FOUNDATION_ADDITIONS_H_
