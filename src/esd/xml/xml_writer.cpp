#include "esd/xml/xml_writer.h"

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace esd {
namespace {

// An element whose start tag is written and whose children are being written.
struct OpenNode {
  const XMLDocumentNode* node;
  std::size_t next_child;
};

// The entity that stands for a character, or null for one that stands for itself.
const char* EntityOf(char c) {
  switch (c) {
    case '"':
      return "&quot;";
    case '&':
      return "&amp;";
    case '\'':
      return "&apos;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    default:
      return nullptr;
  }
}

void AppendEscaped(std::string& out, const char* begin, const char* end) {
  const char* copied = begin;
  for (const char* c = begin; c != end; ++c) {
    const char* const entity = EntityOf(*c);
    if (entity == nullptr) continue;
    out.append(copied, c).append(entity);
    copied = c + 1;
  }
  out.append(copied, end);
}

// Gathers the text, and hands it to the stream, where there is one, line by line: many pieces would
// take more time than writing the text.
class LineWriter {
 public:
  explicit LineWriter(std::ostream* stream) : stream_(stream) {}

  void Expect(std::size_t bytes) { text_.reserve(bytes + kSlack); }

  LineWriter& operator<<(std::string_view text) {
    text_ += text;
    return *this;
  }

  void Escape(std::string_view text) {
    AppendEscaped(text_, text.data(), text.data() + text.size());
  }

  void EndLine() {
    text_ += '\n';
    if (stream_ == nullptr) return;
    *stream_ << text_ << std::flush;
    text_.clear();
  }

  // What has not been handed to a stream.
  std::string TakeRest() { return std::move(text_); }

 private:
  static constexpr std::size_t kSlack = 1024;

  std::ostream* stream_;
  std::string text_;
};

void WriteAttributes(LineWriter& out, const XMLDocumentNode& node, const char* before,
                     const char* after) {
  for (const auto& [name, value] : node.GetAttributes()) {
    out << before << name << "=\"" << value << "\"" << after;
  }
}

void WriteStart(LineWriter& out, const XMLDocumentNode& node) {
  if (node.is_declaration()) {
    out << "<?xml version=\"" << node.version() << "\" ";
    WriteAttributes(out, node, "", " ");
    out << "?>";
    out.EndLine();
    return;
  }
  out << "<" << node.GetName();
  WriteAttributes(out, node, " ", "");
  out << ">";
  const std::string data = node.GetData();
  if (!data.empty()) {
    out.Escape(data);
  } else if (!node.children().empty()) {
    out.EndLine();
  }
}

void WriteEnd(LineWriter& out, const XMLDocumentNode& node) {
  if (!node.is_declaration()) out << "</" << node.GetName() << ">";
}

void Write(LineWriter& out, const XMLDocumentNode& node) {
  // A writer that called itself for each level would overrun the stack on a deep document.
  std::vector<OpenNode> open = {{&node, 0}};
  WriteStart(out, node);
  while (!open.empty()) {
    auto& [current, next_child] = open.back();
    if (next_child < current->children().size()) {
      const XMLDocumentNode* const child = current->children()[next_child++].get();
      WriteStart(out, *child);
      open.push_back({child, 0});
    } else {
      WriteEnd(out, *current);
      open.pop_back();
      if (!open.empty()) out.EndLine();
    }
  }
}

}  // namespace

std::ostream& WriteXMLNode(std::ostream& stream, const XMLDocumentNode& node) {
  LineWriter out(&stream);
  Write(out, node);
  return stream << out.TakeRest();
}

std::string ToXMLText(const XMLDocumentNode& node, std::size_t expected) {
  LineWriter out(nullptr);
  out.Expect(expected);
  Write(out, node);
  return out.TakeRest();
}

std::string XMLEscaping::EscapeXML(const char* begin, const char* end) {
  std::string escaped;
  escaped.reserve(static_cast<std::size_t>(end - begin));
  AppendEscaped(escaped, begin, end);
  return escaped;
}

}  // namespace esd
