#include "platform/bundle.h"

#include "platform/macos/text.h"

namespace platform {

std::string MainExecutablePath() {
  @autoreleasepool {
    return ToUtf8([[NSBundle mainBundle] executablePath]);
  }
}

std::string MainBundlePath() {
  @autoreleasepool {
    return ToUtf8([[NSBundle mainBundle] bundlePath]);
  }
}

std::string StandardizePath(const std::string& path) {
  @autoreleasepool {
    return ToUtf8([ToNSString(path) stringByStandardizingPath]);
  }
}

std::optional<std::string> ReadPropertyListString(const std::string& path, const std::string& key) {
  @autoreleasepool {
    NSString* file = ToNSString(path);
    if (file == nil) return std::nullopt;
    NSDictionary* list = [NSDictionary dictionaryWithContentsOfFile:file];
    id value = [list objectForKey:ToNSString(key)];
    if (![value isKindOfClass:[NSString class]]) return std::nullopt;
    return ToUtf8(value);
  }
}

}  // namespace platform
