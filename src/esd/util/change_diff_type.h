// Value conversion between texts and typed values, by one rule for every pair of types.
//
// The rule is the standard streams': decimal numbers, booleans as "1" and "0", one word as a
// string.
#ifndef ESD_UTIL_CHANGE_DIFF_TYPE_H_
#define ESD_UTIL_CHANGE_DIFF_TYPE_H_

#include <istream>
#include <locale>
#include <sstream>
#include <utility>

namespace esd {

/// The conversion of a From to a To, both of which the standard streams write and read.
template <typename From, typename To>
struct ChangeDiffTypeImpl {
  /// Converts `in` and gives the result in `out`. False, and `out` untouched, when `in` does not
  /// start with a value of type To (after white space), the value is out of range, or more than
  /// white space follows it.
  static bool ChangeType(const From& in, To& out) {
    std::stringstream stream;
    // Whatever a loaded library has made the global locale.
    stream.imbue(std::locale::classic());
    if (!(stream << in)) return false;
    To value{};
    if (!(stream >> value)) return false;
    if (!stream.eof()) stream >> std::ws;
    if (!stream.eof()) return false;
    out = std::move(value);
    return true;
  }
};

}  // namespace esd

#endif  // ESD_UTIL_CHANGE_DIFF_TYPE_H_
