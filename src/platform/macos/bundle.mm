#include "platform/bundle.h"

#include <string_view>

#include "platform/file_descriptor.h"
#include "platform/macos/text.h"
#include "platform/property_list.h"

namespace platform {
namespace {

// The root of the property list in a file, XML or binary, as an object of the enclosing autorelease
// pool; nil when there is none.
id ReadPropertyList(const std::string& path) {
  const std::optional<std::string> bytes = ReadRegularFile(path, kPropertyListLimit);
  if (!bytes) return nil;
  NSData* data = [NSData dataWithBytes:bytes->data() length:bytes->size()];
  return [NSPropertyListSerialization propertyListWithData:data
                                                   options:NSPropertyListImmutable
                                                    format:nullptr
                                                     error:nullptr];
}

// What stands under `key` of `node`, if that is a dictionary and this of the kind; else nil.
id Find(id node, const std::string& key, Class kind) {
  if (![node isKindOfClass:[NSDictionary class]]) return nil;
  id value = [node objectForKey:ToNSString(key)];
  return [value isKindOfClass:kind] ? value : nil;
}

// Truths and fractions are numbers, too; Foundations differ in what a truth is made of.
bool IsInteger(NSNumber* number) {
  return std::string_view("cCBfd").find(*[number objCType]) == std::string_view::npos;
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
    id value = Find(ReadPropertyList(path), key, [NSString class]);
    return value != nil ? std::optional(ToUtf8(value)) : std::nullopt;
  }
}

std::optional<std::vector<std::string>> ReadPropertyListStrings(const std::string& path,
                                                                const std::string& key) {
  @autoreleasepool {
    NSArray* array = Find(ReadPropertyList(path), key, [NSArray class]);
    if (array == nil) return std::nullopt;
    std::vector<std::string> strings;
    for (id element in array) {
      if (![element isKindOfClass:[NSString class]]) return std::nullopt;
      strings.push_back(ToUtf8(element));
    }
    return strings;
  }
}

std::optional<std::int64_t> ReadPropertyListInteger(const std::string& path,
                                                    const std::string& outer_key,
                                                    const std::string& key) {
  @autoreleasepool {
    id inner = Find(ReadPropertyList(path), outer_key, [NSDictionary class]);
    NSNumber* value = Find(inner, key, [NSNumber class]);
    if (value == nil || !IsInteger(value)) return std::nullopt;
    return [value longLongValue];
  }
}

}  // namespace platform
