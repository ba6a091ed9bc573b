#include "welko/interface_language.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <optional>
#include <utility>

#include "platform/languages.h"
#include "welko/ascii_case.h"

namespace welko {
namespace {

using LanguageTable = std::map<std::string, std::string>;

// "cs_CZ" is found under "cs", "cs-cz", "cs_CZ" and "cs_cz".
void AddLanguage(LanguageTable& table, const std::string& code) {
  const std::string lower = AsciiLower(code);
  std::string hyphenated = lower;
  std::replace(hyphenated.begin(), hyphenated.end(), '_', '-');
  for (const std::string& key : {code, lower, hyphenated}) table[key] = code;
  table.emplace(code.substr(0, 2), code);
}

LanguageTable MakeLanguageTable() {
  LanguageTable table;
  // A language's first code is the one its bare tag stands for.
  for (const char* code :
       {"cs_CZ", "da_DK", "de_DE", "el_GR", "en_US", "es_ES", "fi_FI", "fr_FR", "hu_HU",
        "it_IT", "ja_JP", "ko_KR", "nb_NO", "nl_NL", "pl_PL", "pt_BR", "ro_RO", "ru_RU",
        "sv_SE", "tr_TR", "uk_UA", "zh_CN", "en_GB", "es_LA", "es_NA", "fr_CA", "zh_TW"}) {
    AddLanguage(table, code);
  }
  table["zh-Hans"] = "zh_CN";
  // Hong Kong reads the Taiwan texts.
  for (const char* tag : {"zh-Hant", "zh-hk", "zh_HK"}) table[tag] = "zh_TW";
  return table;
}

std::optional<std::string> FindCode(const std::string& tag) {
  static const LanguageTable table = MakeLanguageTable();
  const auto row = table.find(tag);
  if (row == table.end()) return std::nullopt;
  return row->second;
}

// The code for the tag itself, for it cut to script or region, in lower case, and at last for its
// first two letters.
std::optional<std::string> FindNearestCode(std::string tag) {
  if (auto code = FindCode(tag)) return code;
  for (const std::size_t length : {7U, 5U}) {
    if (tag.size() <= length) continue;
    tag.resize(length);
    if (auto code = FindCode(tag)) return code;
  }
  tag = AsciiLower(tag);
  if (auto code = FindCode(tag)) return code;
  return tag.size() >= 3 ? FindCode(tag.substr(0, 2)) : std::nullopt;
}

const char* ArabicCode() {
  const std::string locale = AsciiLower(platform::CurrentLocaleIdentifier());
  return locale == "ar_dz" || locale == "ar_tn" || locale == "ar_ma" ? "fr_MA" : "en_AE";
}

}  // namespace

bool GetUserInterfaceLanguage(std::string& out) {
  for (const std::string& tag : platform::PreferredLanguages()) {
    const std::string lower = AsciiLower(tag);
    if (lower == "ar") {
      out = ArabicCode();
      return true;
    }
    if (lower == "he") {
      out = "en_IL";
      return true;
    }
    if (MapLanguageCode(tag, out)) return true;
  }
  out = "en_US";
  return true;
}

bool MapLanguageCode(std::string tag, std::string& out) {
  std::optional<std::string> code = FindNearestCode(std::move(tag));
  if (!code) return false;
  out = *std::move(code);
  return true;
}

}  // namespace welko
