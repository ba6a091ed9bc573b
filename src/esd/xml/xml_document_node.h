// An element of an XML document in memory, or the document itself: its declaration node.
//
// A node owns its children and knows no parent. It keeps no comments, and no text but its own.
#ifndef ESD_XML_XML_DOCUMENT_NODE_H_
#define ESD_XML_XML_DOCUMENT_NODE_H_

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace esd {

/// A node with the subtree below it. One thread at a time uses a tree.
class XMLDocumentNode {
 public:
  /// Children in document order, none of them null.
  using Children = std::vector<std::unique_ptr<XMLDocumentNode>>;

  /// An element called `name`, without data, attributes and children.
  explicit XMLDocumentNode(std::string name) : XMLDocumentNode(std::move(name), false) {}
  /// A document's declaration node, without version, attributes and children.
  static std::unique_ptr<XMLDocumentNode> MakeDeclaration();
  /// Destroys the whole subtree, however deep: a node before its children, these in order.
  virtual ~XMLDocumentNode();
  XMLDocumentNode(const XMLDocumentNode&) = delete;
  XMLDocumentNode& operator=(const XMLDocumentNode&) = delete;

  /// Replaces the node's text.
  virtual void SetData(const std::string& text) { data_ = text; }
  /// Adds to the end of the node's text.
  virtual void AppendData(const std::string& text) { data_ += text; }
  /// Sets one attribute, replacing its former value. A declaration node's "version" is kept apart
  /// from its attributes.
  virtual void SetAttributeData(const std::string& name, const std::string& value);
  /// Appends `node` and owns it from then on; null is ignored.
  virtual void AddChild(XMLDocumentNode* node);
  /// Destroys the child `node` with its subtree. False, with nothing changed, when it is no child.
  virtual bool RemoveChild(XMLDocumentNode* node);
  /// Does nothing.
  virtual void OnComplete() {}
  /// The node's text, with characters in the place of entities.
  virtual std::string GetData() const { return data_; }
  /// The element's name; empty for a declaration node.
  virtual std::string GetName() const { return name_; }
  /// The attributes, sorted by name in byte order.
  virtual std::vector<std::pair<std::string, std::string>> GetAttributes() const;

  /// The children, which the node owns; AddChild and RemoveChild change the list.
  const Children& children() const { return children_; }
  /// The document's XML version; empty but on a declaration node.
  const std::string& version() const { return version_; }
  /// Whether this is a document's declaration node, not an element.
  bool is_declaration() const { return is_declaration_; }

 private:
  XMLDocumentNode(std::string name, bool is_declaration)
      : name_(std::move(name)), is_declaration_(is_declaration) {}

  std::string version_;
  std::map<std::string, std::string> attributes_;
  Children children_;
  std::string data_;
  std::string name_;
  bool is_declaration_;
};

}  // namespace esd

#endif  // ESD_XML_XML_DOCUMENT_NODE_H_
