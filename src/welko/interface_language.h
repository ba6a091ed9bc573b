// The interface language code of the user, such as "de_DE".
#ifndef WELKO_INTERFACE_LANGUAGE_H_
#define WELKO_INTERFACE_LANGUAGE_H_

#include <string>

namespace welko {

/// Gives in `out` the five-character code for the first of the user's preferred languages that the
/// product speaks, "en_US" when it speaks none of them. Arabic and Hebrew are served in French or
/// English with a regional code. Always true.
bool GetUserInterfaceLanguage(std::string& out);

/// Gives in `out` the code for a language tag: for the tag itself, for it cut to script or region,
/// in lower case, and at last for its first two letters. False, and `out` untouched, when nothing
/// fits.
bool MapLanguageCode(std::string tag, std::string& out);

}  // namespace welko

#endif  // WELKO_INTERFACE_LANGUAGE_H_
