// Filling numbered placeholders in a text.
#ifndef ESD_UTIL_FORMAT_STRING_H_
#define ESD_UTIL_FORMAT_STRING_H_

#include <string>
#include <string_view>

namespace esd {

/// Writes `format` to `out` with every "%N", N from 0 to 9, replaced by argument N; all digits
/// after the "%" belong to N. "%%" gives "%"; a "%" before anything else, or at the end, stands for
/// itself. False when an N is above 9: `out` then keeps what was written before it.
bool FormatString(std::string& out, std::string_view format, std::string_view arg0, int arg1,
                  std::string_view arg2 = {}, std::string_view arg3 = {},
                  std::string_view arg4 = {}, std::string_view arg5 = {},
                  std::string_view arg6 = {}, std::string_view arg7 = {},
                  std::string_view arg8 = {}, std::string_view arg9 = {});

}  // namespace esd

#endif  // ESD_UTIL_FORMAT_STRING_H_
