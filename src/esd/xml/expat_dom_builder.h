// Builds a document tree from an XML file with the expat parser.
#ifndef ESD_XML_EXPAT_DOM_BUILDER_H_
#define ESD_XML_EXPAT_DOM_BUILDER_H_

#include <expat.h>

#include <cstdint>
#include <memory>
#include <stack>
#include <string>
#include <string_view>

#include "platform/file_descriptor.h"

namespace esd {

/// Where and why a text is no well-formed XML.
struct XmlFault {
  std::uint64_t line = 0;    ///< from 1
  std::uint64_t column = 0;  ///< in bytes, from 1
  std::string text;          ///< the parser's own words
};

/// Owns at most one document. Used by one thread at a time.
template <typename Node>
class ExpatDOMBuilder {
 public:
  ExpatDOMBuilder() = default;
  virtual ~ExpatDOMBuilder();
  ExpatDOMBuilder(const ExpatDOMBuilder&) = delete;
  ExpatDOMBuilder& operator=(const ExpatDOMBuilder&) = delete;

  /// Destroys the document.
  void Clear();

  /// Starts a new document, which holds its declaration node alone, and prepares for ParseFile.
  /// Both arguments are XML_ParserCreate_MM's and may be null. On false, when memory runs out,
  /// there may be no document.
  bool Create(const char* encoding, const char* namespace_separator);

  /// Reads the file `path` into the document that Create has made. A file that is missing, cannot
  /// be opened or is empty gives `result_if_unreadable` and leaves the document as it is. False for
  /// text that is no well-formed XML, and when reading or memory fails: what was read up to there
  /// stays in the document.
  bool ParseFile(const std::string& path, bool result_if_unreadable);
  /// The same for a file that is open, from its beginning.
  bool ParseFile(const platform::FileDescriptor& file, bool result_if_unreadable);
  /// The same for `text`.
  bool ParseText(std::string_view text);
  /// Whether the last parsing was false because of the text, and not for another reason.
  bool is_malformed() const { return is_malformed_; }
  /// What the parser found wrong; only after a parsing that was false because of the text.
  XmlFault fault() const;

  /// The declaration node, owned by the builder; null without a document.
  Node* GetRoot() const { return root_.get(); }

 private:
  static void OnStartElement(void* self, const char* name, const char** attributes);
  static void OnEndElement(void* self, const char* name);
  static void OnCharacterData(void* self, const char* text, int length);
  static void OnDeclaration(void* self, const char* version, const char* encoding, int standalone);
  template <typename Callback>
  void Guard(Callback callback);
  template <typename Read>
  bool Parse(Read read);

  std::unique_ptr<Node> root_;
  std::stack<Node*> open_nodes_;  ///< the root at the bottom, then the open elements
  bool in_element_ = false;       ///< from a start tag to the next end tag
  XML_Parser parser_ = nullptr;
  bool callback_failed_ = false;  ///< for want of memory
  bool is_malformed_ = false;
};

}  // namespace esd

#endif  // ESD_XML_EXPAT_DOM_BUILDER_H_
