// The part of Foundation that wakerly calls, as the public interface documents it.
#ifndef FOUNDATION_H_
#define FOUNDATION_H_

#include <CoreFoundation/CoreFoundation.h>
#include <objc/NSObject.h>
#include <os/availability.h>

@interface NSString : NSObject
@property(readonly) const char* UTF8String;
@property(readonly) NSString* stringByStandardizingPath;
+ (instancetype)stringWithUTF8String:(const char*)text;
@end

@protocol NSFastEnumeration
- (unsigned long)countByEnumeratingWithState:(struct __objcFastEnumerationState*)state
                                     objects:(id*)buffer
                                       count:(unsigned long)length;
@end

@interface NSArray : NSObject <NSFastEnumeration>
@end

@interface NSNumber : NSObject
@property(readonly) const char* objCType;
@property(readonly) long long longLongValue;
@end

@interface NSData : NSObject
+ (instancetype)dataWithBytes:(const void*)bytes length:(unsigned long)length;
@end

@interface NSDictionary : NSObject
- (id)objectForKey:(id)key;
@end

enum : unsigned long { NSPropertyListImmutable = 0 };

@class NSError;

@interface NSPropertyListSerialization : NSObject
+ (id)propertyListWithData:(NSData*)data
                   options:(unsigned long)options
                    format:(unsigned long*)format
                     error:(NSError**)error API_AVAILABLE(macos(10.6));
@end

@interface NSBundle : NSObject
@property(class, readonly) NSBundle* mainBundle;
@property(readonly) NSString* bundlePath;
@property(readonly) NSString* executablePath;
@end

@interface NSLocale : NSObject
@property(class, readonly) NSLocale* currentLocale;
@property(class, readonly) NSArray* preferredLanguages API_AVAILABLE(macos(10.5));
@property(readonly) NSString* localeIdentifier;
@end

struct NSOperatingSystemVersion {
  long majorVersion;
  long minorVersion;
  long patchVersion;
};
typedef struct NSOperatingSystemVersion NSOperatingSystemVersion;

@interface NSProcessInfo : NSObject
@property(class, readonly) NSProcessInfo* processInfo;
@property(readonly) NSOperatingSystemVersion operatingSystemVersion API_AVAILABLE(macos(10.10));
@end

@interface NSRecursiveLock : NSObject
@property(copy) NSString* name API_AVAILABLE(macos(10.5));
- (void)lock;
- (void)unlock;
@end

#ifdef __cplusplus
extern "C"
#endif
    NSString*
    NSHomeDirectory(void);

#endif  // FOUNDATION_H_
