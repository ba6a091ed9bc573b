// The user's languages, as the operating system keeps them.
#ifndef PLATFORM_LANGUAGES_H_
#define PLATFORM_LANGUAGES_H_

#include <string>
#include <vector>

namespace platform {

/// The user's preferred languages as tags such as "de-AT", the most preferred first; may be empty.
std::vector<std::string> PreferredLanguages();

/// The identifier of the current locale, such as "ar_MA"; empty when there is none.
std::string CurrentLocaleIdentifier();

}  // namespace platform

#endif  // PLATFORM_LANGUAGES_H_
