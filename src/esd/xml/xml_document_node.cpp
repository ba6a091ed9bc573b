#include "esd/xml/xml_document_node.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <new>

namespace esd {

std::unique_ptr<XMLDocumentNode> XMLDocumentNode::MakeDeclaration() {
  return std::unique_ptr<XMLDocumentNode>(new XMLDocumentNode("", true));
}

XMLDocumentNode::~XMLDocumentNode() {
  data_.clear();
  attributes_.clear();
  // A destructor that called itself for each level would overrun the stack on a deep document, so
  // each node hands over its children before it is destroyed. The last one here is the next.
  try {
    Children doomed(std::make_move_iterator(children_.rbegin()),
                    std::make_move_iterator(children_.rend()));
    while (!doomed.empty()) {
      const std::unique_ptr<XMLDocumentNode> node = std::move(doomed.back());
      doomed.pop_back();
      const std::size_t first_orphan = doomed.size();
      doomed.resize(first_orphan + node->children_.size());
      std::move(node->children_.rbegin(), node->children_.rend(),
                doomed.begin() + static_cast<std::ptrdiff_t>(first_orphan));
      node->children_.clear();
    }
  } catch (const std::bad_alloc&) {
    // What is left is destroyed by recursion, and each level tries this again.
  }
}

void XMLDocumentNode::SetAttributeData(const std::string& name, const std::string& value) {
  if (is_declaration_ && name == "version") {
    version_ = value;
  } else {
    attributes_[name] = value;
  }
}

void XMLDocumentNode::AddChild(XMLDocumentNode* node) {
  std::unique_ptr<XMLDocumentNode> owned(node);
  if (owned) children_.push_back(std::move(owned));
}

bool XMLDocumentNode::RemoveChild(XMLDocumentNode* node) {
  const auto child = std::find_if(children_.begin(), children_.end(),
                                  [node](const auto& owned) { return owned.get() == node; });
  if (child == children_.end()) return false;
  children_.erase(child);
  return true;
}

std::vector<std::pair<std::string, std::string>> XMLDocumentNode::GetAttributes() const {
  return {attributes_.begin(), attributes_.end()};
}

}  // namespace esd
