#include "tests/macos/recording_system.h"

#import <CoreServices/CoreServices.h>
#import <SystemConfiguration/SystemConfiguration.h>
#include <objc/runtime.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

// The look-up of Linux, under a name of its own.
#define platform linux_platform
#include "platform/folders.h"

namespace test {

RecordingSystem& System() {
  static RecordingSystem system;
  return system;
}

std::size_t ObjectsAlive() {
  GSDebugAllocationActive(YES);
  std::size_t count = 0;
  Class* const classes = GSDebugAllocationClassList();
  for (Class* each = classes; each != nullptr && *each != Nil; ++each) {
    count += static_cast<std::size_t>(GSDebugAllocationCount(*each));
  }
  std::free(classes);
  return count;
}

void AddOperatingSystemVersion() {
  const auto answer = [](id, SEL) { return NSOperatingSystemVersion{14, 2, 1}; };
  class_addMethod([NSProcessInfo class], @selector(operatingSystemVersion),
                  reinterpret_cast<IMP>(+answer), "{?=qqq}@:");
}

}  // namespace test

namespace {

template <typename... Parts>
void Record(const Parts&... parts) {
  std::ostringstream line;
  (line << ... << parts);
  test::System().calls.push_back(line.str());
}

std::string Code(OSType type) {
  std::string code;
  for (int shift = 24; shift >= 0; shift -= 8) code += static_cast<char>(type >> shift);
  return code;
}

}  // namespace

const CFAllocatorRef kCFAllocatorDefault = nullptr;

CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding encoding) {
  if (encoding != kCFStringEncodingUTF8) return nullptr;
  return reinterpret_cast<CFStringRef>([[NSString alloc] initWithUTF8String:text]);
}

void CFRelease(CFTypeRef object) {
  [reinterpret_cast<NSObject*>(const_cast<void*>(object)) release];
}

OSErr FSFindFolder(FSVolumeRefNum volume, OSType type, Boolean create, FSRef* found) {
  Record("FSFindFolder ", volume, " ", Code(type), " ", int{create});
  const auto path =
      linux_platform::FindFolder(linux_platform::FolderDomain{volume}, type, create, 0);
  if (!path) return -43;  // fnfErr
  *found = {};
  test::System().reference = *path;
  return noErr;
}

OSStatus FSPathMakeRef(const UInt8* path, FSRef* reference, Boolean* is_directory) {
  const auto* text = reinterpret_cast<const char*>(path);
  Record("FSPathMakeRef ", text, " ", is_directory == nullptr ? "" : "is a directory?");
  if (access(text, F_OK) != 0) return -43;
  *reference = {};
  test::System().reference = text;
  return noErr;
}

OSStatus FSRefMakePath(const FSRef*, UInt8* path, UInt32 size) {
  Record("FSRefMakePath ", size);
  const std::string& text = test::System().reference;
  if (text.size() >= size) return size % 1024 == 0 ? -210 : -2110;
  text.copy(reinterpret_cast<char*>(path), size);
  path[text.size()] = 0;
  return noErr;
}

OSErr Gestalt(OSType selector, SInt32* response) {
  const auto answer = test::System().gestalt.find(Code(selector));
  if (answer == test::System().gestalt.end()) return -5551;  // gestaltUndefSelectorErr
  *response = answer->second;
  return noErr;
}

OSStatus LSOpenApplication(const LSApplicationParameters* asked, ProcessSerialNumber* process) {
  Record("LSOpenApplication ", test::System().reference, std::hex, " version=", asked->version,
         " flags=", asked->flags, " refcon=", asked->asyncLaunchRefCon,
         " environment=", asked->environment, " argv=", asked->argv,
         " event=", static_cast<void*>(asked->initialEvent),
         " process=", static_cast<void*>(process));
  // What a framework makes for itself goes into the caller's pool.
  [NSMutableString stringWithUTF8String:"opened"];
  return test::System().open_status[test::System().reference];
}

CFStringRef SCDynamicStoreCopyConsoleUser(SCDynamicStoreRef store, uid_t* uid, gid_t* gid) {
  Record("SCDynamicStoreCopyConsoleUser ", store);
  const auto& user = test::System().console_user;
  if (!user) return nullptr;
  *uid = user->first;
  *gid = user->second;
  return CFStringCreateWithCString(nullptr, "somebody", kCFStringEncodingUTF8);
}
