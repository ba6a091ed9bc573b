#include "esd/xml/expat_dom_builder.h"

#include <istream>
#include <new>
#include <utility>

#include "esd/util/file_stream.h"
#include "esd/xml/xml_document_node.h"

namespace esd {
namespace {

constexpr int kBufferSize = 1024;

}  // namespace

// An exception must not unwind the parser's own frames: it waits until the parser has returned.
template <typename Node>
template <typename Callback>
void ExpatDOMBuilder<Node>::Guard(Callback callback) {
  if (failure_) return;
  try {
    callback();
  } catch (...) {
    failure_ = std::current_exception();
    XML_StopParser(parser_, XML_FALSE);
  }
}

template <typename Node>
ExpatDOMBuilder<Node>::~ExpatDOMBuilder() {
  Clear();
}

template <typename Node>
void ExpatDOMBuilder<Node>::Clear() {
  if (parser_ != nullptr) XML_ParserFree(parser_);
  parser_ = nullptr;
  while (!open_nodes_.empty()) open_nodes_.pop();  // assigning would need memory
  root_.reset();
  in_element_ = false;
  failure_ = nullptr;
}

template <typename Node>
bool ExpatDOMBuilder<Node>::Create(const char* encoding, const char* namespace_separator) {
  Clear();
  parser_ = XML_ParserCreate_MM(encoding, nullptr, namespace_separator);
  if (parser_ == nullptr) return false;
  XML_SetUserData(parser_, this);
  try {
    root_ = Node::MakeDeclaration();
    root_->SetAttributeData("version", "1.0");
    root_->SetAttributeData("encoding", "UTF-8");
    open_nodes_.push(root_.get());
  } catch (const std::bad_alloc&) {
    return false;
  }
  XML_SetStartElementHandler(parser_, &OnStartElement);
  XML_SetEndElementHandler(parser_, &OnEndElement);
  XML_SetCharacterDataHandler(parser_, &OnCharacterData);
  XML_SetXmlDeclHandler(parser_, &OnDeclaration);
  return true;
}

template <typename Node>
bool ExpatDOMBuilder<Node>::ParseFile(const std::string& path, bool result_if_unreadable) {
  ESDifstream file(path, "rb");
  std::istream& stream = *file.stream();
  if (!file.stream()->is_open()) return result_if_unreadable;
  stream.seekg(0, std::ios::end);
  if (stream.fail() || stream.tellg() == std::istream::pos_type(0)) return result_if_unreadable;
  stream.seekg(0);
  bool well_formed = true;
  while (stream.good() && well_formed) {
    void* buffer = XML_GetBuffer(parser_, kBufferSize);
    if (buffer == nullptr) return false;
    stream.read(static_cast<char*>(buffer), kBufferSize);
    const bool is_final = stream.fail();
    well_formed = XML_ParseBuffer(parser_, static_cast<int>(stream.gcount()), is_final) != 0;
  }
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
  return well_formed;
}

template <typename Node>
void ExpatDOMBuilder<Node>::OnStartElement(void* self, const char* name, const char** attributes) {
  auto* builder = static_cast<ExpatDOMBuilder*>(self);
  builder->Guard([=] {
    builder->in_element_ = true;
    auto element = std::make_unique<Node>(name);
    Node* const node = element.get();
    builder->open_nodes_.top()->AddChild(element.release());
    builder->open_nodes_.push(node);
    for (const char** pair = attributes; *pair != nullptr; pair += 2) {
      node->SetAttributeData(pair[0], pair[1]);
    }
  });
}

template <typename Node>
void ExpatDOMBuilder<Node>::OnEndElement(void* self, const char* /*name*/) {
  auto* builder = static_cast<ExpatDOMBuilder*>(self);
  if (builder->failure_) return;  // the element may not have been opened
  builder->in_element_ = false;
  builder->open_nodes_.pop();
}

template <typename Node>
void ExpatDOMBuilder<Node>::OnCharacterData(void* self, const char* text, int length) {
  auto* builder = static_cast<ExpatDOMBuilder*>(self);
  if (!builder->in_element_) return;
  builder->Guard([=] {
    builder->open_nodes_.top()->AppendData(std::string(text, static_cast<std::size_t>(length)));
  });
}

template <typename Node>
void ExpatDOMBuilder<Node>::OnDeclaration(void* self, const char* version, const char* /*encoding*/,
                                          int /*standalone*/) {
  auto* builder = static_cast<ExpatDOMBuilder*>(self);
  if (version == nullptr) return;
  builder->Guard([=] {
    builder->root_->SetAttributeData("version", version);
    // The parser hands out UTF-8 whatever the file's own encoding.
    builder->root_->SetAttributeData("encoding", "UTF-8");
  });
}

template class ExpatDOMBuilder<XMLDocumentNode>;

}  // namespace esd
