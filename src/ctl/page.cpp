#include "ctl/page.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace ctl {
namespace {

constexpr std::size_t kGap = 2;           // between label and text
constexpr std::size_t kNarrowest = 20;    // columns of text that wrapping leaves
constexpr std::size_t kWidestLabel = 24;  // a longer one is no reason to move all text

std::string_view Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

// Columns, where each character takes one: a byte that continues a character of UTF-8 takes none.
std::size_t Columns(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](unsigned char byte) { return (byte & 0xC0U) != 0x80U; }));
}

const char* ColourOf(Tone tone) {
  switch (tone) {
    case Tone::kGood:
      return "\x1b[32m";
    case Tone::kNote:
      return "\x1b[33m";
    case Tone::kBad:
      return "\x1b[31m";
    case Tone::kPlain:
      break;
  }
  return "\x1b[1m";
}

std::string Coloured(const std::string& text, Tone tone, const Display& display) {
  return display.has_colour && !text.empty() ? ColourOf(tone) + text + "\x1b[0m" : text;
}

// Appends `text` behind `start` columns that are there already, each further line behind `indent`
// blanks. A word that is longer than a line stays whole.
void AppendWrapped(std::string& page, std::string_view text, std::size_t indent,
                   const Display& display) {
  const std::size_t width = std::max(display.width, indent + kNarrowest) - indent;
  std::size_t used = 0;
  while (!text.empty()) {
    const std::size_t blank = std::min(text.find(' '), text.size());
    const std::string_view word = text.substr(0, blank);
    if (used != 0 && used + 1 + Columns(word) > width) {
      page.append("\n").append(indent, ' ');
      used = 0;
    } else if (used != 0) {
      page += ' ';
      ++used;
    }
    page += word;
    used += Columns(word);
    text.remove_prefix(std::min(blank + 1, text.size()));
  }
}

void AppendText(std::string& page, const std::string& text, std::size_t indent,
                const Display& display) {
  if (display.is_terminal) {
    AppendWrapped(page, text, indent, display);
  } else {
    page += text;
  }
}

// What stands between a label and its text. On a terminal the text begins at `indent`, on the next
// line where the label reaches beyond.
void AppendGap(std::string& page, std::size_t label, std::size_t indent, const Display& display) {
  const bool fits = label + kGap <= indent;
  if (display.is_terminal && !fits) page += '\n';
  page.append(!display.is_terminal ? kGap : fits ? indent - label : indent, ' ');
}

// The characters that a terminal may act on, in UTF-8: their last byte, and what stands before it.
struct ActingCharacters {
  std::string_view before;
  unsigned char first;
  unsigned char last;
};
constexpr ActingCharacters kActing[] = {
    {"", 0x00, 0x1F},         {"", 0x7F, 0x7F}, {"\xC2", 0x80, 0x9F},
    {"\xE2\x80", 0xA8, 0xAE},  // line and paragraph separator, and the direction of writing
    {"\xE2\x81", 0xA6, 0xA9},  // that direction
};

// The length of the character that `text` begins with, if it is one of those; else 0.
std::size_t ActingLength(std::string_view text) {
  for (const auto& [before, first, last] : kActing) {
    if (text.size() <= before.size() || !text.starts_with(before)) continue;
    const auto byte = static_cast<unsigned char>(text[before.size()]);
    if (byte >= first && byte <= last) return before.size() + 1;
  }
  return 0;
}

}  // namespace

std::string Printable(std::string_view text) {
  std::string printable;
  printable.reserve(text.size());
  while (!text.empty()) {
    const std::size_t acting = ActingLength(text);
    printable += acting != 0 ? '?' : text.front();
    text.remove_prefix(std::max<std::size_t>(acting, 1));
  }
  return printable;
}

Display StandardDisplay() {
  Display display;
  display.is_terminal = isatty(STDOUT_FILENO) == 1;
  if (!display.is_terminal) return display;
  display.has_colour = Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0) display.width = size.ws_col;
  return display;
}

void Page::AddTitle(std::string text) { lines_.push_back({Kind::kTitle, "", {}, std::move(text)}); }

void Page::AddRow(std::string label, Tone tone, std::string text) {
  lines_.push_back({Kind::kRow, std::move(label), tone, std::move(text)});
}

void Page::AddDetail(std::string text) {
  lines_.push_back({Kind::kDetail, "", {}, std::move(text)});
}

void Page::AddVerbatim(std::string text) {
  lines_.push_back({Kind::kVerbatim, "", {}, std::move(text)});
}

std::string Page::Render(const Display& display) const {
  std::size_t widest = 0;
  for (const Line& line : lines_) {
    if (Columns(line.label) <= kWidestLabel) widest = std::max(widest, Columns(line.label));
  }
  const std::size_t indent = display.is_terminal ? widest + kGap : kGap;
  std::string page;
  for (const Line& line : lines_) {
    const std::string text = Printable(line.text);
    const std::string label = Printable(line.label);
    switch (line.kind) {
      case Kind::kTitle:
        if (!page.empty()) page += '\n';
        AppendText(page, text, 0, display);
        break;
      case Kind::kRow:
        page += Coloured(label, line.tone, display);
        if (!text.empty()) AppendGap(page, Columns(label), indent, display);
        AppendText(page, text, indent, display);
        break;
      case Kind::kDetail:
        page.append(indent, ' ');
        AppendText(page, text, indent, display);
        break;
      case Kind::kVerbatim:
        page += text;
        break;
    }
    page += '\n';
  }
  return page;
}

}  // namespace ctl
