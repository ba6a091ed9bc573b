// Foundation's strings and ours.
#ifndef PLATFORM_MACOS_TEXT_H_
#define PLATFORM_MACOS_TEXT_H_

#import <Foundation/Foundation.h>

#include <string>

namespace platform {

/// The UTF-8 text of `string`; empty for nil.
inline std::string ToUtf8(NSString* string) {
  const char* text = [string UTF8String];
  return text != nullptr ? text : "";
}

/// `text` as a string of the enclosing autorelease pool; nil when it is not UTF-8.
inline NSString* ToNSString(const std::string& text) {
  return [NSString stringWithUTF8String:text.c_str()];
}

}  // namespace platform

#endif  // PLATFORM_MACOS_TEXT_H_
