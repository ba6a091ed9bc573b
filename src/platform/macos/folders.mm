#include "platform/folders.h"

#import <CoreServices/CoreServices.h>

#include "platform/folder_making.h"
#include "platform/macos/text.h"
#include "platform/posix/standard_folder.h"

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

OSStatus MakePath(const FSRef& folder, std::string& buffer) {
  return FSRefMakePath(&folder, reinterpret_cast<UInt8*>(buffer.data()),
                       static_cast<UInt32>(buffer.size()));
}

std::optional<std::string> PathOf(const FSRef& folder, std::size_t path_size) {
  // What File Manager says of a buffer that is too small.
  constexpr OSStatus kBufferTooSmall = -2110;
  constexpr OSStatus kPathTooLong = -210;
  constexpr std::size_t kFirstSize = 256;
  std::string buffer(path_size == kAnySize ? kFirstSize : path_size, '\0');
  OSStatus status = MakePath(folder, buffer);
  while (path_size == kAnySize && (status == kBufferTooSmall || status == kPathTooLong)) {
    buffer.resize(2 * buffer.size());
    status = MakePath(folder, buffer);
  }
  if (status != noErr) return std::nullopt;
  return Utf8Text(buffer.c_str());
}

// File Manager has no path for a folder that is missing.
std::optional<std::string> PretendFolder(FolderDomain domain, FolderType type,
                                         std::size_t path_size) {
  std::optional<std::string> path = StandardFolder(domain, type, "", HomeFolder());
  const bool fits = path && (path_size == kAnySize || path->size() < path_size);
  return fits && CouldMakeFolder(*path) ? path : std::nullopt;
}

}  // namespace

std::optional<std::string> FindFolder(FolderDomain domain, FolderType type, bool create,
                                      std::size_t path_size) {
  @autoreleasepool {
    FSRef folder;
    const Boolean makes = create && MakesFolders() ? kCreateFolder : kDontCreateFolder;
    if (FSFindFolder(static_cast<FSVolumeRefNum>(domain), type, makes, &folder) == noErr) {
      return PathOf(folder, path_size);
    }
    return create && !MakesFolders() ? PretendFolder(domain, type, path_size) : std::nullopt;
  }
}

std::string HomeFolder() {
  @autoreleasepool {
    return ToUtf8(NSHomeDirectory());
  }
}

}  // namespace platform
