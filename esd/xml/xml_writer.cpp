#include "esd/xml/xml_writer.h"

#include <cstddef>
#include <vector>

namespace esd {
namespace {

// An element whose start tag is written and whose children are being written.
struct OpenNode {
  const XMLDocumentNode* node;
  std::size_t next_child;
};

void WriteAttributes(std::ostream& stream, const XMLDocumentNode& node, const char* before,
                     const char* after) {
  for (const auto& [name, value] : node.GetAttributes()) {
    stream << before << name << "=\"" << value << '"' << after;
  }
}

void WriteStart(std::ostream& stream, const XMLDocumentNode& node) {
  if (node.is_declaration()) {
    stream << "<?xml version=\"" << node.version() << "\" ";
    WriteAttributes(stream, node, "", " ");
    stream << "?>" << std::endl;
    return;
  }
  stream << '<' << node.GetName();
  WriteAttributes(stream, node, " ", "");
  stream << '>';
  const std::string data = node.GetData();
  if (!data.empty()) {
    stream << XMLEscaping::EscapeXML(data.data(), data.data() + data.size());
  } else if (!node.children().empty()) {
    stream << std::endl;
  }
}

void WriteEnd(std::ostream& stream, const XMLDocumentNode& node) {
  if (!node.is_declaration()) stream << "</" << node.GetName() << '>';
}

}  // namespace

std::ostream& WriteXMLNode(std::ostream& stream, const XMLDocumentNode& node) {
  // A writer that called itself for each level would overrun the stack on a deep document.
  std::vector<OpenNode> open = {{&node, 0}};
  WriteStart(stream, node);
  while (!open.empty()) {
    auto& [current, next_child] = open.back();
    if (next_child < current->children().size()) {
      const XMLDocumentNode* const child = current->children()[next_child++].get();
      WriteStart(stream, *child);
      open.push_back({child, 0});
    } else {
      WriteEnd(stream, *current);
      open.pop_back();
      if (!open.empty()) stream << std::endl;
    }
  }
  return stream;
}

std::string XMLEscaping::EscapeXML(const char* begin, const char* end) {
  std::string escaped;
  for (const char* c = begin; c != end; ++c) {
    switch (*c) {
      case '"':
        escaped += "&quot;";
        break;
      case '&':
        escaped += "&amp;";
        break;
      case '\'':
        escaped += "&apos;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      default:
        escaped += *c;
    }
  }
  return escaped;
}

}  // namespace esd
