// The part of Core Foundation that wakerly calls, as the public interface documents it.
#ifndef CORE_FOUNDATION_H_
#define CORE_FOUNDATION_H_

#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const void* CFTypeRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFArray* CFArrayRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFString* CFStringRef;
typedef long CFIndex;
typedef UInt32 CFStringEncoding;

enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

extern const CFAllocatorRef kCFAllocatorDefault;

CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text,
                                      CFStringEncoding encoding);
void CFRelease(CFTypeRef object);

#ifdef __cplusplus
}
#endif

#endif  // CORE_FOUNDATION_H_
