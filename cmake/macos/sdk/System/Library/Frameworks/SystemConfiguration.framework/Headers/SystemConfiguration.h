// The part of SystemConfiguration that wakerly calls, as the public interface documents it.
#ifndef SYSTEM_CONFIGURATION_H_
#define SYSTEM_CONFIGURATION_H_

#include <CoreFoundation/CoreFoundation.h>
#include <os/availability.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __SCDynamicStore* SCDynamicStoreRef;

CFStringRef SCDynamicStoreCopyConsoleUser(SCDynamicStoreRef store, uid_t* uid, gid_t* gid)
    API_AVAILABLE(macos(10.1));

#ifdef __cplusplus
}
#endif

#endif  // SYSTEM_CONFIGURATION_H_
