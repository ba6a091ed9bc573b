// The digest that wakerly calls.
#include <stdint.h>

#define CC_MD5_DIGEST_LENGTH 16
typedef uint32_t CC_LONG;

extern "C" unsigned char* CC_MD5(const void* bytes, CC_LONG size, unsigned char* digest);
