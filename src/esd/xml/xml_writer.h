// Prints a document tree as XML text, in the one layout in which preference files are kept.
#ifndef ESD_XML_XML_WRITER_H_
#define ESD_XML_XML_WRITER_H_

#include <cstddef>
#include <ostream>
#include <string>

#include "esd/xml/xml_document_node.h"

namespace esd {

/// Writes `node` and its subtree, however deep, to `stream` and returns it; the stream is flushed
/// after every newline. The caller looks at its state. Only character data is escaped: an
/// attribute value that holds a quote, "<" or "&" gives text that does not parse back.
std::ostream& WriteXMLNode(std::ostream& stream, const XMLDocumentNode& node);

/// The text that WriteXMLNode writes. It is made fastest when it has about `expected` bytes.
std::string ToXMLText(const XMLDocumentNode& node, std::size_t expected);

namespace XMLEscaping {

/// A copy of the characters from `begin` to `end` with the five that XML predefines as entities in
/// their place (XML 1.0, section 4.6).
std::string EscapeXML(const char* begin, const char* end);

}  // namespace XMLEscaping
}  // namespace esd

#endif  // ESD_XML_XML_WRITER_H_
