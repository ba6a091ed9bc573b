#include "esd/xml/expat_dom_builder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "esd/xml/xml_document_node.h"

namespace esd {
namespace {

constexpr int kBufferSize = 1024;

}  // namespace

// An exception must not unwind the parser's own frames.
template <typename Node>
template <typename Callback>
void ExpatDOMBuilder<Node>::Guard(Callback callback) {
  if (callback_failed_) return;
  try {
    callback();
  } catch (...) {
    callback_failed_ = true;
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
  callback_failed_ = is_malformed_ = false;
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
  return ParseFile(platform::OpenRegularFile(path), result_if_unreadable);
}

template <typename Node>
bool ExpatDOMBuilder<Node>::ParseFile(const platform::FileDescriptor& file,
                                      bool result_if_unreadable) {
  is_malformed_ = false;
  struct stat status {};
  if (!file) return result_if_unreadable;
  if (fstat(file.number(), &status) != 0) return false;
  if (status.st_size == 0) return result_if_unreadable;
  return Parse([&](void* buffer, std::size_t at) {
    return pread(file.number(), buffer, kBufferSize, static_cast<off_t>(at));
  });
}

template <typename Node>
bool ExpatDOMBuilder<Node>::ParseText(std::string_view text) {
  is_malformed_ = false;
  return Parse([&](void* buffer, std::size_t at) {
    return static_cast<ssize_t>(text.copy(static_cast<char*>(buffer), kBufferSize, at));
  });
}

// `read` fills a buffer of kBufferSize bytes with what begins at an offset, as read(2) does.
template <typename Node>
template <typename Read>
bool ExpatDOMBuilder<Node>::Parse(Read read) {
  XML_Status parsed = XML_STATUS_OK;
  bool is_final = false;
  for (std::size_t at = 0; parsed == XML_STATUS_OK && !is_final;) {
    void* const buffer = XML_GetBuffer(parser_, kBufferSize);
    if (buffer == nullptr) return false;
    const ssize_t size = read(buffer, at);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return false;
    at += static_cast<std::size_t>(size);
    is_final = size < kBufferSize;
    parsed = XML_ParseBuffer(parser_, static_cast<int>(size), is_final);
  }
  if (parsed == XML_STATUS_OK) return true;
  is_malformed_ = !callback_failed_ && XML_GetErrorCode(parser_) != XML_ERROR_NO_MEMORY;
  return false;
}

template <typename Node>
XmlFault ExpatDOMBuilder<Node>::fault() const {
  // The parser counts lines from 1 and columns from 0.
  return {XML_GetCurrentLineNumber(parser_), XML_GetCurrentColumnNumber(parser_) + 1,
          XML_ErrorString(XML_GetErrorCode(parser_))};
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
  if (builder->callback_failed_) return;  // the element may not have been opened
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
