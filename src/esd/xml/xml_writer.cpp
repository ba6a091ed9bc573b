#include "esd/xml/xml_writer.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace esd {
namespace {

// An element whose start tag is written and whose children are being written.
struct OpenNode {
  const XMLDocumentNode* node;
  std::size_t next_child;
};

// Gathers what stands in one line, since handing a stream many pieces takes more time than writing
// the text.
class LineWriter {
 public:
  explicit LineWriter(std::ostream& stream) : stream_(stream) {}

  LineWriter& operator<<(std::string_view text) {
    line_ += text;
    return *this;
  }

  void EndLine() {
    stream_ << line_ << std::endl;
    line_.clear();
  }

  void EndText() { stream_ << line_; }

 private:
  std::ostream& stream_;
  std::string line_;
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
    out << XMLEscaping::EscapeXML(data.data(), data.data() + data.size());
  } else if (!node.children().empty()) {
    out.EndLine();
  }
}

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

void WriteEnd(LineWriter& out, const XMLDocumentNode& node) {
  if (!node.is_declaration()) out << "</" << node.GetName() << ">";
}

}  // namespace

std::ostream& WriteXMLNode(std::ostream& stream, const XMLDocumentNode& node) {
  LineWriter out(stream);
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
  out.EndText();
  return stream;
}

std::string XMLEscaping::EscapeXML(const char* begin, const char* end) {
  std::string escaped;
  escaped.reserve(static_cast<std::size_t>(end - begin));
  const char* copied = begin;
  for (const char* c = begin; c != end; ++c) {
    const char* const entity = EntityOf(*c);
    if (entity == nullptr) continue;
    escaped.append(copied, c).append(entity);
    copied = c + 1;
  }
  return escaped.append(copied, end);
}

}  // namespace esd
