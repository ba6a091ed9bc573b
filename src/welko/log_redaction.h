// What keeps credentials and access tokens out of the log.
#ifndef WELKO_LOG_REDACTION_H_
#define WELKO_LOG_REDACTION_H_

#include <string>
#include <string_view>
#include <vector>

namespace welko {

/// Whether `message` holds something of the shape of a JSON Web Token (RFC 7519): two parts that
/// begin like the Base64 text of a JSON object, the second behind a ".".
bool HoldsToken(std::string_view message);

/// The names, in lower case, of the elements that hold credentials, in the order of masking.
std::vector<std::string> CredentialKeys();

/// Puts "****" in place of what stands between the tags of each element in `keys`, such as "<user>"
/// and "</user>", whatever the letters' case in the message. Only an element's first opening and
/// first closing tag count; an empty element, and one whose closing tag comes first, is left alone.
void MaskCredentials(std::string& message, const std::vector<std::string>& keys);

/// Makes `message` what a log may hold: masked by MaskCredentials with `keys`, or a text that
/// stands in its place where it holds a token. Whether it holds one.
bool Redact(std::string& message, const std::vector<std::string>& keys);

/// `value` as a log may show it behind `key`: as what is left of it when it stands in the log as
/// the element <key>value</key>. The mask alone where that leaves nothing of the element to tell
/// the value by: a key can hold tags itself.
std::string RedactedValue(const std::string& key, const std::string& value);

}  // namespace welko

#endif  // WELKO_LOG_REDACTION_H_
