#include "welko/log_redaction.h"

#include "welko/ascii_case.h"

namespace welko {
namespace {

constexpr std::string_view kMask = "****";

}  // namespace

bool HoldsToken(std::string_view message) {
  const std::size_t header = message.find("eyJ");
  return header != std::string_view::npos && message.find(".eyJ", header) != std::string_view::npos;
}

std::vector<std::string> CredentialKeys() {
  return {"proxyusername", "proxy-user",     "proxyuser",     "user",
          "username",      "proxy-password", "proxypassword", "password"};
}

void MaskCredentials(std::string& message, const std::vector<std::string>& keys) {
  if (message.find('<') == std::string::npos) return;  // as in nearly every message
  std::string lower = AsciiLower(message);
  for (const std::string& key : keys) {
    const std::string opening = "<" + key + ">";
    const std::string closing = "</" + key + ">";
    const std::size_t open = lower.find(opening);
    const std::size_t close = lower.find(closing);
    if (open == std::string::npos || close == std::string::npos) continue;
    const std::size_t start = open + opening.size();
    if (close <= start) continue;
    message.replace(start, close - start, kMask);
    lower.replace(start, close - start, kMask);
  }
}

bool Redact(std::string& message, const std::vector<std::string>& keys) {
  const bool holds_token = HoldsToken(message);
  if (holds_token) {
    message = "Found access/device token. Log skipped.";
  } else {
    MaskCredentials(message, keys);
  }
  return holds_token;
}

std::string RedactedValue(const std::string& key, const std::string& value) {
  const std::string opening = "<" + key + ">";
  const std::string closing = "</" + key + ">";
  std::string element = opening + value + closing;
  if (Redact(element, CredentialKeys())) return std::string(kMask);
  // A key that holds tags is masked with its value, at times.
  if (!element.starts_with(opening) || !element.ends_with(closing) ||
      element.size() < opening.size() + closing.size()) {
    return std::string(kMask);
  }
  return element.substr(opening.size(), element.size() - opening.size() - closing.size());
}

}  // namespace welko
