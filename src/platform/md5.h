// The MD5 digest (RFC 1321), for names, not for secrets.
#ifndef PLATFORM_MD5_H_
#define PLATFORM_MD5_H_

#include <array>
#include <string>

namespace platform {

/// The 16 bytes of the digest of `bytes`.
std::array<unsigned char, 16> Md5Digest(const std::string& bytes);

}  // namespace platform

#endif  // PLATFORM_MD5_H_
