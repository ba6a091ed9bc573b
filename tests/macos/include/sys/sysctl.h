// The part of sysctl(3) that wakerly calls.
#include <stddef.h>

extern "C" int sysctlbyname(const char* name, void* value, size_t* size, void* wanted,
                            size_t wanted_size);
