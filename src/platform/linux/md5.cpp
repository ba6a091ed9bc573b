#include "platform/md5.h"

#include <md5.h>

namespace platform {

std::array<unsigned char, 16> Md5Digest(const std::string& bytes) {
  MD5_CTX context;
  MD5Init(&context);
  MD5Update(&context, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  std::array<unsigned char, 16> digest{};
  MD5Final(digest.data(), &context);
  return digest;
}

}  // namespace platform
