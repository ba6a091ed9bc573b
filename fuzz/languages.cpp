// Any text as a language tag, and as the user's list of languages: the answer is a code of the
// product, which stands for itself, and the first language that it speaks decides.
#include <algorithm>

#include "fuzz/fuzz.h"
#include "welko/interface_language.h"

namespace {

bool IsCode(const std::string& text) {
  const auto in = [&](std::size_t i, char first, char last) {
    return text[i] >= first && text[i] <= last;
  };
  return text.size() == 5 && in(0, 'a', 'z') && in(1, 'a', 'z') && text[2] == '_' &&
         in(3, 'A', 'Z') && in(4, 'A', 'Z');
}

void CheckTag(const std::string& tag) {
  std::string code = "before", same = code;
  const bool spoken = welko::MapLanguageCode(tag, code);
  CHECK(spoken ? IsCode(code) : code == same);
  if (spoken) CHECK(welko::MapLanguageCode(code, same) && same == code);
  // Language, region and script tags may have more behind them.
  if (tag.size() != 2 && tag.size() != 5 && tag.size() != 7) return;
  CHECK(welko::MapLanguageCode(tag + "-x-private", same) == spoken && same == code);
}

std::string AskWith(const std::string& list) {
  // Always the same place in the environment: setenv would keep every value for good.
  static char variable[256] = "LANGUAGE=";
  static const int registered = putenv(variable);
  CHECK(registered == 0);
  std::snprintf(variable, sizeof variable, "LANGUAGE=%s", list.c_str());
  std::string code;
  CHECK(welko::GetUserInterfaceLanguage(code) && IsCode(code));
  return code;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string tag(fuzz::Text(data, size));
  CheckTag(tag);
  const std::string list = tag.substr(0, std::min<std::size_t>(tag.find('\0'), 200));
  CHECK(AskWith("xx:" + list) == AskWith(list + ":en:fr"));
  CHECK(AskWith("sv:" + list) == "sv_SE");
  return 0;
}
