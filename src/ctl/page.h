// A command's answer for people: titles, labelled rows and plain lines.
#ifndef CTL_PAGE_H_
#define CTL_PAGE_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ctl {

/// How a row is meant; a terminal shows it by colour.
enum class Tone { kPlain, kGood, kNote, kBad };

/// Where a page is printed.
struct Display {
  /// Whether labels are aligned and long text is wrapped, at `width` columns.
  bool is_terminal = false;
  bool has_colour = false;
  std::size_t width = 80;
};

/// The display that standard output is. NO_COLOR in the environment, unless empty, and TERM=dumb
/// turn the colour off.
Display StandardDisplay();

/// `text` with "?" for each character that a terminal may act on: control characters (C0 and C1 of
/// ISO 6429), line ends too, and those that turn the direction of writing (UAX #9).
std::string Printable(std::string_view text);

/// Rows are collected and rendered at the end, when the widest label is known.
class Page {
 public:
  /// A line of its own with an empty line above it, unless it is the first.
  void AddTitle(std::string text);
  /// A line of text under a label. Its text may be empty.
  void AddRow(std::string label, Tone tone, std::string text);
  /// One more line of text under the label of the row above.
  void AddDetail(std::string text);
  /// A line that is printed as it is: never wrapped, so that it can be copied.
  void AddVerbatim(std::string text);

  /// The whole text, each line ended by a newline. Texts are printed as Printable has them, so that
  /// none can act on a terminal or pass for two lines.
  std::string Render(const Display& display) const;

 private:
  enum class Kind { kTitle, kRow, kDetail, kVerbatim };
  struct Line {
    Kind kind;
    std::string label;
    Tone tone;
    std::string text;
  };

  std::vector<Line> lines_;
};

}  // namespace ctl

#endif  // CTL_PAGE_H_
