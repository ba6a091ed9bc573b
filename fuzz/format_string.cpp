// A format's first line is filled with itself and fixed texts. What no placeholder stands for is
// copied, an argument is never read as a format, and two halves give what the whole gives.
#include <algorithm>

#include "esd/util/format_string.h"
#include "fuzz/fuzz.h"

namespace {

struct Filled {
  bool complete;
  std::string text;
};

Filled Fill(std::string_view format, std::string_view argument) {
  Filled filled;
  filled.complete = esd::FormatString(filled.text, format, argument, 1, "2", "3", "4", "5", "6",
                                      "7", "8", argument);
  return filled;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The halves meet at the first place from the middle on where no placeholder is cut in two.
void CheckHalves(std::string_view format) {
  std::size_t cut = format.size() / 2;
  while (cut < format.size() &&
         (cut == 0 || format[cut - 1] == '%' || format[cut] == '%' || IsDigit(format[cut])))
    ++cut;
  const Filled whole = Fill(format, "");
  const Filled head = Fill(format.substr(0, cut), ""), tail = Fill(format.substr(cut), "");
  CHECK(whole.complete == (head.complete && tail.complete));
  CHECK(whole.text == (head.complete ? head.text + tail.text : head.text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzz::Text(data, size);
  const std::string_view format = fuzz::TakeLine(input);
  std::string escaped, digits;
  for (const char c : format) {
    escaped.append(c == '%' ? "%%" : "").append(c == '%' ? 0 : 1, c);
    if (IsDigit(c)) digits += c;
  }
  const Filled copy = Fill(escaped, "");
  CHECK(copy.complete && copy.text == format);
  CheckHalves(format);
  const Filled argument = Fill("%0|%9", format);
  CHECK(argument.complete && argument.text == std::string(format).append("|").append(format));
  if (!digits.empty()) {
    const Filled number = Fill("%" + digits, "");
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
    CHECK(number.complete == (digits.size() == 1));
    if (number.complete) CHECK(number.text == (digits == "0" || digits == "9" ? "" : digits));
  }
  Fill(format, input);
  return 0;
}
