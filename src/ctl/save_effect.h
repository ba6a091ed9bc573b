// What a save would make of an element: the writer does not escape everything that the parser
// reads.
#ifndef CTL_SAVE_EFFECT_H_
#define CTL_SAVE_EFFECT_H_

#include "esd/xml/xml_document_node.h"

namespace ctl {

/// What comes back when an element is written and read again.
enum class SaveEffect {
  kNone,     ///< the same
  kChanges,  ///< other text
  kBreaks,   ///< no well-formed XML
};

/// The effect on `node` and its subtree. Blanks around child elements do not count.
SaveEffect EffectOfSave(const esd::XMLDocumentNode& node);

}  // namespace ctl

#endif  // CTL_SAVE_EFFECT_H_
