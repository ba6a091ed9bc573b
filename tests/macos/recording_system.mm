#include "tests/macos/recording_system.h"

#import <CoreServices/CoreServices.h>
#import <SystemConfiguration/SystemConfiguration.h>
#include <objc/runtime.h>
#include <unistd.h>

#include <cstring>
#include <sstream>

// The look-up of Linux, under a name of its own.
namespace linux_platform {
enum class FolderDomain : std::int16_t;
std::optional<std::string> FindFolder(FolderDomain domain, std::uint32_t type, bool create,
                                      std::size_t path_size);
}  // namespace linux_platform

namespace {

template <typename... Parts>
void Record(const Parts&... parts) {
  std::ostringstream line;
  line << std::hex << std::showbase;
  (line << ... << parts);
  test::System().calls.push_back(line.str());
}

std::string Code(OSType type) {
  std::string code;
  for (int shift = 24; shift >= 0; shift -= 8) code += static_cast<char>(type >> shift);
  return code;
}

// A reference is the address of a path that is never freed.
FSRef MakeRef(const std::string& path) {
  const auto* kept = new std::string(path);
  FSRef reference = {};
  std::memcpy(reference.hidden, &kept, sizeof kept);
  return reference;
}

const std::string& PathOf(const FSRef* reference) {
  const std::string* kept = nullptr;
  std::memcpy(&kept, reference->hidden, sizeof kept);
  return *kept;
}

NSOperatingSystemVersion Answer(id, SEL) { return {14, 2, 1}; }

}  // namespace

namespace test {

RecordingSystem& System() {
  static RecordingSystem system;
  return system;
}

void AddOperatingSystemVersion() {
  class_addMethod([NSProcessInfo class], @selector(operatingSystemVersion),
                  reinterpret_cast<IMP>(&Answer), "{?=qqq}@:");
}

}  // namespace test

const CFAllocatorRef kCFAllocatorDefault = nullptr;

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding) {
  if (encoding != kCFStringEncodingUTF8) return nullptr;
  NSString* string = [[NSString alloc] initWithUTF8String:text];
  if (string != nil) ++test::System().unreleased;
  return reinterpret_cast<CFStringRef>(string);
}

void CFRelease(CFTypeRef object) {
  --test::System().unreleased;
  [reinterpret_cast<NSObject*>(const_cast<void*>(object)) release];
}

OSErr FSFindFolder(FSVolumeRefNum volume, OSType type, Boolean create, FSRef* found) {
  Record("FSFindFolder ", std::dec, volume, " ", Code(type), " ", int{create});
  const auto path =
      linux_platform::FindFolder(linux_platform::FolderDomain{volume}, type, create, 0);
  if (!path) return -43;  // fnfErr
  *found = MakeRef(*path);
  return noErr;
}

OSStatus FSPathMakeRef(const UInt8* path, FSRef* reference, Boolean* is_directory) {
  const auto* text = reinterpret_cast<const char*>(path);
  Record("FSPathMakeRef ", text, " ", static_cast<void*>(is_directory));
  if (access(text, F_OK) != 0) return -43;
  *reference = MakeRef(text);
  return noErr;
}

OSStatus FSRefMakePath(const FSRef* reference, UInt8* path, UInt32 size) {
  Record("FSRefMakePath ", std::dec, size);
  const std::string& text = PathOf(reference);
  if (text.size() >= size) return size % 1024 == 0 ? -210 : -2110;
  std::memcpy(path, text.c_str(), text.size() + 1);
  return noErr;
}

OSErr Gestalt(OSType selector, SInt32* response) {
  const auto answer = test::System().gestalt.find(Code(selector));
  if (answer == test::System().gestalt.end()) return -5551;  // gestaltUndefSelectorErr
  *response = answer->second;
  return noErr;
}

OSStatus LSOpenApplication(const LSApplicationParameters* asked, ProcessSerialNumber* process) {
  Record("LSOpenApplication ", PathOf(asked->application), " version=", asked->version,
         " flags=", asked->flags, " refcon=", asked->asyncLaunchRefCon,
         " environment=", asked->environment, " argv=", asked->argv,
         " event=", static_cast<void*>(asked->initialEvent),
         " process=", static_cast<void*>(process));
  return test::System().open_status;
}

CFStringRef SCDynamicStoreCopyConsoleUser(SCDynamicStoreRef store, uid_t* uid, gid_t* gid) {
  Record("SCDynamicStoreCopyConsoleUser ", store);
  const auto& user = test::System().console_user;
  if (!user) return nullptr;
  *uid = user->first;
  *gid = user->second;
  return CFStringCreateWithCString(nullptr, "somebody", kCFStringEncodingUTF8);
}
