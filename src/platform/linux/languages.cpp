#include "platform/languages.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace platform {
namespace {

// The first of `names` that is set and not empty, in locale(7)'s order.
std::string FirstSet(std::initializer_list<const char*> names) {
  for (const char* name : names) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return value;
  }
  return "";
}

// "de_AT.UTF-8@euro" less its encoding and modifier; empty for the locales that name no language.
std::string LocaleName(std::string_view locale) {
  const std::string_view name = locale.substr(0, locale.find_first_of(".@"));
  return name == "C" || name == "POSIX" ? "" : std::string(name);
}

}  // namespace

std::vector<std::string> PreferredLanguages() {
  const std::string list = FirstSet({"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"});
  std::vector<std::string> languages;
  for (std::size_t start = 0; start <= list.size();) {
    const std::size_t end = std::min(list.find(':', start), list.size());
    std::string tag = LocaleName(std::string_view(list).substr(start, end - start));
    std::replace(tag.begin(), tag.end(), '_', '-');
    if (!tag.empty()) languages.push_back(std::move(tag));
    start = end + 1;
  }
  return languages;
}

std::string CurrentLocaleIdentifier() {
  return LocaleName(FirstSet({"LC_ALL", "LC_MESSAGES", "LANG"}));
}

}  // namespace platform
