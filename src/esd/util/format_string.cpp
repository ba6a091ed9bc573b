#include "esd/util/format_string.h"

#include <array>
#include <cstddef>

#include "esd/util/change_diff_type.h"

namespace esd {
namespace {

constexpr std::size_t kArguments = 10;
constexpr std::size_t kNumberArgument = 1;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Takes the digits at the head of `text` off it and gives their value, or kArguments when it is no
// argument's number: the value may have any count of digits.
std::size_t TakeArgumentNumber(std::string_view& text) {
  std::size_t number = 0;
  while (!text.empty() && IsDigit(text.front())) {
    if (number < kArguments) number = number * 10 + static_cast<std::size_t>(text.front() - '0');
    text.remove_prefix(1);
  }
  return number;
}

}  // namespace

bool FormatString(std::string& out, std::string_view format, std::string_view arg0, int arg1,
                  std::string_view arg2, std::string_view arg3, std::string_view arg4,
                  std::string_view arg5, std::string_view arg6, std::string_view arg7,
                  std::string_view arg8, std::string_view arg9) {
  const std::array<std::string_view, kArguments> texts = {arg0, "",   arg2, arg3, arg4,
                                                          arg5, arg6, arg7, arg8, arg9};
  out.clear();
  while (!format.empty()) {
    const char c = format.front();
    format.remove_prefix(1);
    if (c != '%' || format.empty()) {
      out += c;
    } else if (IsDigit(format.front())) {
      const std::size_t number = TakeArgumentNumber(format);
      if (number >= kArguments) return false;
      std::string decimal;
      if (number == kNumberArgument &&
          !ChangeDiffTypeImpl<int, std::string>::ChangeType(arg1, decimal)) {
        return false;
      }
      out += number == kNumberArgument ? std::string_view(decimal) : texts[number];
    } else {
      out += '%';
      if (format.front() != '%') out += format.front();
      format.remove_prefix(1);
    }
  }
  return true;
}

}  // namespace esd
