// The part of File Manager, Launch Services and Gestalt that wakerly calls, as the public interface
// documents it.
#ifndef CORE_SERVICES_H_
#define CORE_SERVICES_H_

#include <CoreFoundation/CoreFoundation.h>
#include <os/availability.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef SInt16 FSVolumeRefNum;
typedef OptionBits LSLaunchFlags;
typedef struct AEDesc AppleEvent;

struct FSRef {
  UInt8 hidden[80];
};
typedef struct FSRef FSRef;

enum { kDontCreateFolder = 0, kCreateFolder = 1 };

enum : LSLaunchFlags {
  kLSLaunchDefaults = 0x00000001,
  kLSLaunchAsync = 0x00010000,
  kLSLaunchNewInstance = 0x00080000
};

#pragma pack(push, 2)
struct LSApplicationParameters {
  CFIndex version;
  LSLaunchFlags flags;
  const FSRef* application;
  void* asyncLaunchRefCon;
  CFDictionaryRef environment;
  CFArrayRef argv;
  AppleEvent* initialEvent;
};
#pragma pack(pop)
typedef struct LSApplicationParameters LSApplicationParameters;
static_assert(sizeof(LSApplicationParameters) == 52, "as Launch Services reads it");

OSErr FSFindFolder(FSVolumeRefNum volume, OSType folderType, Boolean createFolder, FSRef* found)
    API_AVAILABLE(macos(10.0));
OSStatus FSPathMakeRef(const UInt8* path, FSRef* reference, Boolean* isDirectory)
    API_AVAILABLE(macos(10.0));
OSStatus FSRefMakePath(const FSRef* reference, UInt8* path, UInt32 pathBufferSize)
    API_AVAILABLE(macos(10.0));
OSErr Gestalt(OSType selector, SInt32* response) API_AVAILABLE(macos(10.0));
OSStatus LSOpenApplication(const LSApplicationParameters* parameters, ProcessSerialNumber* process)
    API_AVAILABLE(macos(10.4));

#ifdef __cplusplus
}
#endif

#endif  // CORE_SERVICES_H_
