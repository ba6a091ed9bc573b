#include "platform/md5.h"

#include <CommonCrypto/CommonDigest.h>

namespace platform {

std::array<unsigned char, 16> Md5Digest(const std::string& bytes) {
  std::array<unsigned char, CC_MD5_DIGEST_LENGTH> digest{};
  CC_MD5(bytes.data(), static_cast<CC_LONG>(bytes.size()), digest.data());
  return digest;
}

}  // namespace platform
