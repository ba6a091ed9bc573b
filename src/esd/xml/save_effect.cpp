#include "esd/xml/save_effect.h"

#include <cstddef>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "esd/xml/expat_dom_builder.h"
#include "esd/xml/xml_writer.h"

namespace esd {
namespace {

// An element's own text. What stands before its children is layout, where it is blank.
std::string TextOf(const XMLDocumentNode& node) {
  const std::string text = node.GetData();
  const bool is_layout =
      !node.children().empty() && text.find_first_not_of(" \t\r\n") == std::string::npos;
  return is_layout ? "" : text;
}

bool IsSame(const XMLDocumentNode& one, const XMLDocumentNode& other) {
  // A deep document would overrun the stack of a function that calls itself.
  std::vector<std::pair<const XMLDocumentNode*, const XMLDocumentNode*>> open = {{&one, &other}};
  while (!open.empty()) {
    const auto [left, right] = open.back();
    open.pop_back();
    if (left->GetName() != right->GetName() || TextOf(*left) != TextOf(*right) ||
        left->GetAttributes() != right->GetAttributes() ||
        left->children().size() != right->children().size()) {
      return false;
    }
    for (std::size_t i = 0; i < left->children().size(); ++i) {
      open.emplace_back(left->children()[i].get(), right->children()[i].get());
    }
  }
  return true;
}

}  // namespace

SaveEffect EffectOfSave(const XMLDocumentNode& node) {
  ExpatDOMBuilder<XMLDocumentNode> builder;
  if (!builder.Create(nullptr, nullptr)) throw std::bad_alloc();
  if (!builder.ParseText(ToXMLText(node, 0))) {
    if (!builder.is_malformed()) throw std::bad_alloc();
    return SaveEffect::kBreaks;
  }
  const XMLDocumentNode& read = *builder.GetRoot();
  const bool is_same = IsSame(node, node.is_declaration() ? read : *read.children().front());
  return is_same ? SaveEffect::kNone : SaveEffect::kChanges;
}

}  // namespace esd
