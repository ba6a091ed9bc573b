// A secret is planted in a credential element, or in a token, among any text: it never gets into
// the line, and what lies around it stays. Input: the element's key, what stands before the
// element, the secret, and to the end what stands behind.
#include <algorithm>
#include <iterator>

#include "fuzz/fuzz.h"
#include "welko/ascii_case.h"
#include "welko/log_line.h"
#include "welko/log_redaction.h"

namespace {

using std::string;

constexpr char kMark = '\2';  // found nowhere but in the secret
constexpr const char* kKeys[] = {"proxyusername", "proxy-user",     "proxyuser",     "user",
                                 "username",      "proxy-password", "proxypassword", "password"};

string Less(std::string_view text, std::string_view unwanted) {
  string rest;
  std::copy_if(text.begin(), text.end(), std::back_inserter(rest),
               [=](char c) { return unwanted.find(c) == unwanted.npos; });
  return rest;
}

string Line(const string& message) {
  return welko::FormatLogLine(1, 30, {"", "UPDATER"}, "7", message, " | ", welko::CredentialKeys());
}

string Mask(string message) {
  welko::MaskCredentials(message, welko::CredentialKeys());
  return message;
}

void CheckElement(const string& before, const string& key, const string& secret,
                  const string& after) {
  const string lower_key = welko::AsciiLower(key);
  const string tags[] = {"<" + lower_key + ">", "</" + lower_key + ">"};
  const string lower = welko::AsciiLower(before);
  // Only the first element of a key is masked.
  for (const string& tag : tags) {
    if (lower.find(tag) != string::npos) return;
  }
  const string message = before + "<" + key + ">" + secret + "</" + key + ">" + after;
  CHECK(Line(message).find(kMark) == string::npos);
  const string masked = Mask(message);
  CHECK(masked.find(kMark) == string::npos);
  CHECK(welko::AsciiLower(masked) == Mask(welko::AsciiLower(message)));
  if (before.find('<') == string::npos && after.find('<') == string::npos) {
    CHECK(masked == before + "<" + key + ">****</" + key + ">" + after);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzz::Text(data, size);
  string key(fuzz::TakeLine(input));
  const string before = Less(fuzz::TakeLine(input), {&kMark, 1});
  const string secret = kMark + Less(fuzz::TakeLine(input), "<>") + kMark;
  const string after = Less(input, {&kMark, 1});
  const string lower = welko::AsciiLower(key);
  if (std::find(std::begin(kKeys), std::end(kKeys), lower) == std::end(kKeys)) key = "User";

  CheckElement(before, key, secret, after);
  const string token = Line(before + "eyJ" + secret + ".eyJ" + after);
  CHECK(token.find(" | [WARN] | ") != string::npos && token.find(kMark) == string::npos);
  const string bare = Less(before, "<") + "</" + key + "><" + key + ">" + Less(after, "<");
  CHECK(Mask(bare) == bare);
  return 0;
}
