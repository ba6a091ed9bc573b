#include "esd/util/base64.h"

#include <cstdint>

namespace esd {

std::string EncodeBase64(const unsigned char* bytes, std::size_t size) {
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < size; i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j) group = group << 8 | (i + j < size ? bytes[i + j] : 0U);
    for (std::size_t j = 0; j < 4; ++j) {
      text += i + j <= size ? kAlphabet[group >> (18 - 6 * j) & 63] : '=';
    }
  }
  return text;
}

}  // namespace esd
