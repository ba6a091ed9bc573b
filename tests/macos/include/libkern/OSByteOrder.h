#include <endian.h>

#define OSSwapBigToHostInt32(number) be32toh(number)
