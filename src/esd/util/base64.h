// Base64 text of bytes (RFC 4648, section 4).
#ifndef ESD_UTIL_BASE64_H_
#define ESD_UTIL_BASE64_H_

#include <cstddef>
#include <string>

namespace esd {

/// The Base64 text of `size` bytes, padded with "=" to a multiple of four characters.
std::string EncodeBase64(const unsigned char* bytes, std::size_t size);

}  // namespace esd

#endif  // ESD_UTIL_BASE64_H_
