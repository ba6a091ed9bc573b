// The one field of stat(2) that the systems call by different names.
#ifndef PLATFORM_POSIX_CONTENT_TIME_H_
#define PLATFORM_POSIX_CONTENT_TIME_H_

#include <sys/stat.h>

namespace platform {

/// When the content of the object last changed; lives as long as `status`.
const timespec& ContentTime(const struct stat& status);

}  // namespace platform

#endif  // PLATFORM_POSIX_CONTENT_TIME_H_
