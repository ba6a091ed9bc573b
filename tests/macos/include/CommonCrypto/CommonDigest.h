// The digest that wakerly calls.
#ifndef TESTS_MACOS_COMMONCRYPTO_COMMONDIGEST_H_
#define TESTS_MACOS_COMMONCRYPTO_COMMONDIGEST_H_

#include <stdint.h>

enum { CC_MD5_DIGEST_LENGTH = 16 };
typedef uint32_t CC_LONG;

extern "C" unsigned char* CC_MD5(const void* bytes, CC_LONG size, unsigned char* digest);

#endif  // TESTS_MACOS_COMMONCRYPTO_COMMONDIGEST_H_
