#include "platform/bundle.h"

#include "platform/file_descriptor.h"
#include "platform/macos/text.h"

namespace platform {
namespace {

// The root of a property list, XML or binary; nil when the bytes are none.
id ParsePropertyList(const std::string& bytes) {
  NSData* data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
  return [NSPropertyListSerialization propertyListWithData:data
                                                   options:NSPropertyListImmutable
                                                    format:nullptr
                                                     error:nullptr];
}

}  // namespace

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
    const std::optional<std::string> bytes = ReadRegularFile(path, kPropertyListLimit);
    if (!bytes) return std::nullopt;
    id list = ParsePropertyList(*bytes);
    if (![list isKindOfClass:[NSDictionary class]]) return std::nullopt;
    id value = [list objectForKey:ToNSString(key)];
    if (![value isKindOfClass:[NSString class]]) return std::nullopt;
    return ToUtf8(value);
  }
}

}  // namespace platform
