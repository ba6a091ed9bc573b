#include "welko/log_redaction.h"

#include "welko/ascii_case.h"

namespace welko {
namespace {

constexpr const char* kMaskedKeys[] = {"proxyusername", "proxy-user", "proxyuser",
                                       "user",          "username",   "proxy-password",
                                       "proxypassword", "password"};

}  // namespace

bool HoldsToken(std::string_view message) {
  const std::size_t header = message.find("eyJ");
  return header != std::string_view::npos && message.find(".eyJ", header) != std::string_view::npos;
}

void MaskCredentials(std::string& message) {
  constexpr std::string_view kMask = "****";
  if (message.find('<') == std::string::npos) return;  // as in nearly every message
  std::string lower = AsciiLower(message);
  for (const char* key : kMaskedKeys) {
    const std::string opening = std::string("<") + key + ">";
    const std::string closing = std::string("</") + key + ">";
    const std::size_t open = lower.find(opening);
    const std::size_t close = lower.find(closing);
    if (open == std::string::npos || close == std::string::npos) continue;
    const std::size_t start = open + opening.size();
    if (close <= start) continue;
    message.replace(start, close - start, kMask);
    lower.replace(start, close - start, kMask);
  }
}

}  // namespace welko
