#include "platform/languages.h"

#include "platform/macos/text.h"

namespace platform {

std::vector<std::string> PreferredLanguages() {
  @autoreleasepool {
    std::vector<std::string> languages;
    for (NSString* tag in [NSLocale preferredLanguages]) languages.push_back(ToUtf8(tag));
    return languages;
  }
}

std::string CurrentLocaleIdentifier() {
  @autoreleasepool {
    return ToUtf8([[NSLocale currentLocale] localeIdentifier]);
  }
}

}  // namespace platform
