#include "platform/folders.h"

#import <CoreServices/CoreServices.h>

#include "platform/macos/text.h"

namespace platform {
namespace {

// The text of a C string, which Core Foundation takes for UTF-8 or not at all.
std::optional<std::string> Utf8Text(const char* bytes) {
  const CFStringRef string =
      CFStringCreateWithCString(kCFAllocatorDefault, bytes, kCFStringEncodingUTF8);
  if (string == nullptr) return std::nullopt;
  CFRelease(string);
  return bytes;
}

std::optional<std::string> PathOf(const FSRef& folder) {
  // What File Manager says of a buffer that is too small.
  constexpr OSStatus kBufferTooSmall = -2110;
  constexpr OSStatus kPathTooLong = -210;
  OSStatus status = kBufferTooSmall;
  std::string buffer(128, '\0');
  while (status == kBufferTooSmall || status == kPathTooLong) {
    buffer.resize(2 * buffer.size());
    status = FSRefMakePath(&folder, reinterpret_cast<UInt8*>(buffer.data()),
                           static_cast<UInt32>(buffer.size()));
  }
  if (status != noErr) return std::nullopt;
  return Utf8Text(buffer.c_str());
}

}  // namespace

std::optional<std::string> FindFolder(FolderDomain domain, FolderType type, bool create) {
  @autoreleasepool {
    FSRef folder;
    if (FSFindFolder(static_cast<FSVolumeRefNum>(domain), type,
                     create ? kCreateFolder : kDontCreateFolder, &folder) != noErr) {
      return std::nullopt;
    }
    return PathOf(folder);
  }
}

std::string HomeFolder() {
  @autoreleasepool {
    return Text(NSHomeDirectory());
  }
}

}  // namespace platform
