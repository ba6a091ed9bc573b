// Letter case of ASCII texts, whatever the locale.
#ifndef WELKO_ASCII_CASE_H_
#define WELKO_ASCII_CASE_H_

#include <algorithm>
#include <string>

namespace welko {

/// `text` with the letters A to Z in lower case and every other byte as it is, so that its length
/// and all positions in it stay the same.
inline std::string AsciiLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

}  // namespace welko

#endif  // WELKO_ASCII_CASE_H_
