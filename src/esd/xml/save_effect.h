// What a save would make of an element: the writer does not escape everything that the parser
// reads.
#ifndef ESD_XML_SAVE_EFFECT_H_
#define ESD_XML_SAVE_EFFECT_H_

#include "esd/xml/xml_document_node.h"

namespace esd {

/// What comes back when an element is written and read again.
enum class SaveEffect {
  kNone,     ///< the same
  kChanges,  ///< other text
  kBreaks,   ///< no well-formed XML
};

/// The effect on `node` and its subtree. Blanks around child elements do not count.
SaveEffect EffectOfSave(const esd::XMLDocumentNode& node);

}  // namespace esd

#endif  // ESD_XML_SAVE_EFFECT_H_
