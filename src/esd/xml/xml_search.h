// Finding elements of a document by a predicate, level by level.
#ifndef ESD_XML_XML_SEARCH_H_
#define ESD_XML_XML_SEARCH_H_

#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "esd/util/change_diff_type.h"

namespace esd {

/// Nodes found by a search, in document order; the tree owns them.
template <typename Node>
class SearchResult {
 public:
  /// A result that holds `node` alone, which must not be null.
  explicit SearchResult(Node* node) : nodes_{node} {}
  virtual ~SearchResult() = default;
  /// A copy names the same nodes.
  ///@{
  SearchResult(const SearchResult&) = default;
  SearchResult& operator=(const SearchResult&) = default;
  ///@}

  /// The direct children of each node here, in order, for which `predicate` is true. A child whose
  /// test throws std::bad_cast is left out; any other exception reaches the caller.
  template <typename Predicate>
  SearchResult Children(Predicate predicate) const {
    SearchResult found;
    for (const Node* parent : nodes_) {
      // The predicate may change the tree: it works on a copy of the list.
      std::vector<Node*> children;
      for (const auto& child : parent->children()) children.push_back(child.get());
      for (Node* child : children) {
        try {
          if (predicate(child)) found.nodes_.push_back(child);
        } catch (const std::bad_cast&) {
        }
      }
    }
    return found;
  }

  /// The nodes found, in document order.
  ///@{
  const std::vector<Node*>& nodes() const& { return nodes_; }
  std::vector<Node*> nodes() && { return std::move(nodes_); }
  ///@}

 private:
  SearchResult() = default;

  std::vector<Node*> nodes_;
};

/// The predicate that an element's name is the wanted one.
template <typename Value, typename Equal>
class NodeName_t {
 public:
  /// Wants elements called `name`.
  explicit NodeName_t(Value name) : name_(std::move(name)) {}

  /// False for a null node and for a name that is no Value.
  template <typename Node>
  bool operator()(const Node* node) const {
    Value name;
    return node != nullptr &&
           ChangeDiffTypeImpl<const std::string, Value>::ChangeType(node->GetName(), name) &&
           Equal()(name, name_);
  }

 private:
  Value name_;
};

}  // namespace esd

#endif  // ESD_XML_XML_SEARCH_H_
