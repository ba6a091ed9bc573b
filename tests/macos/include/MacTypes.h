// The names of Darwin's MacTypes.h that the frameworks' declarations use.
#ifndef MAC_TYPES_H_
#define MAC_TYPES_H_

#include <stdint.h>

typedef uint8_t UInt8;
typedef uint32_t UInt32;
typedef int16_t SInt16;
typedef int32_t SInt32;
typedef unsigned char Boolean;
typedef SInt16 OSErr;
typedef SInt32 OSStatus;
typedef UInt32 OptionBits;
typedef UInt32 OSType;

typedef struct ProcessSerialNumber ProcessSerialNumber;

enum { noErr = 0 };

#endif  // MAC_TYPES_H_
