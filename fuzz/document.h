// What the targets that read XML documents share.
#ifndef FUZZ_DOCUMENT_H_
#define FUZZ_DOCUMENT_H_

#include <algorithm>
#include <string>
#include <string_view>

#include "esd/xml/expat_dom_builder.h"
#include "esd/xml/xml_document_node.h"

namespace fuzz {

using Builder = esd::ExpatDOMBuilder<esd::XMLDocumentNode>;
using Node = esd::XMLDocumentNode;

/// Whether `bytes` may declare an entity, in any encoding that the parser knows. Expat 2.5 calls
/// itself for each entity that stands inside another, and a long chain overruns the stack there.
inline bool MayDeclareEntity(std::string_view bytes) {
  std::string text(bytes);
  std::erase(text, '\0');
  return text.find("<!ENTITY") != std::string::npos;
}

/// Whether the text that is written for the tree reads back as the tree. Attribute values and
/// carriage returns are written as they are, and a parser reads some of them as something else.
inline bool ReadsBack(const Node& node) {
  const auto attributes = node.GetAttributes();
  return node.GetData().find('\r') == std::string::npos &&
         std::none_of(attributes.begin(), attributes.end(),
                      [](const auto& pair) {
                        return pair.second.find_first_of("\"&<\t\n\r") != std::string::npos;
                      }) &&
         std::all_of(node.children().begin(), node.children().end(),
                     [](const auto& child) { return ReadsBack(*child); });
}

/// A node's text as it is after a save, which puts a newline before the first of its children.
inline std::string SavedData(const Node& node) {
  const std::string data = node.GetData();
  return data.empty() && !node.is_declaration() && !node.children().empty() ? "\n" : data;
}

inline bool SameWhenSaved(const Node& one, const Node& other) {
  return one.GetName() == other.GetName() && one.version() == other.version() &&
         SavedData(one) == SavedData(other) && one.GetAttributes() == other.GetAttributes() &&
         std::equal(one.children().begin(), one.children().end(), other.children().begin(),
                    other.children().end(),
                    [](const auto& a, const auto& b) { return SameWhenSaved(*a, *b); });
}

}  // namespace fuzz

#endif  // FUZZ_DOCUMENT_H_
