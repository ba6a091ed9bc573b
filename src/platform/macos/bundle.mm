#include "platform/bundle.h"

#include "platform/macos/text.h"

namespace platform {

std::string MainExecutablePath() {
  @autoreleasepool {
    return Text([[NSBundle mainBundle] executablePath]);
  }
}

std::string MainBundlePath() {
  @autoreleasepool {
    return Text([[NSBundle mainBundle] bundlePath]);
  }
}

std::string StandardizePath(const std::string& path) {
  @autoreleasepool {
    return Text([String(path) stringByStandardizingPath]);
  }
}

std::optional<std::string> ReadPropertyListString(const std::string& path, const std::string& key) {
  @autoreleasepool {
    NSString* file = String(path);
    if (file == nil) return std::nullopt;
    NSDictionary* list = [NSDictionary dictionaryWithContentsOfFile:file];
    id value = [list objectForKey:String(key)];
    if (![value isKindOfClass:[NSString class]]) return std::nullopt;
    return Text(value);
  }
}

}  // namespace platform
