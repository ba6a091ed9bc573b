// How preferences lie in the document tree of their file: one element for each key below the root
// element.
//
// What is read here is read from the tree alone: no lock, no file.
#ifndef ESD_PREFS_PREFS_DOCUMENT_H_
#define ESD_PREFS_PREFS_DOCUMENT_H_

#include <concepts>
#include <map>
#include <string>

#include "esd/xml/xml_document_node.h"

namespace esd {

/// A type of value that a store keeps as text.
template <typename T>
concept PrefValue = std::same_as<T, bool> || std::same_as<T, int> ||
    std::same_as<T, unsigned long> || std::same_as<T, std::string>;

/// The element of a map's entry, and its attribute that holds the entry's key.
///@{
inline constexpr char kMapEntryName[] = "MapPrefEntry";
inline constexpr char kMapKeyAttribute[] = "MapPrefKey";
///@}

/// The first element called `root_name` in the document of `declaration`; null when there is none.
XMLDocumentNode* FindPrefsRoot(XMLDocumentNode* declaration, const std::string& root_name);

/// The first entry called `key` of a root element; null when there is none, and without a root.
XMLDocumentNode* FindPrefsEntry(const XMLDocumentNode* root, const std::string& key);

/// Gives in `out` the value of `entry`, which may be null: `otherwise` when it is missing or empty.
/// False, and `out` untouched, for text that is no T.
template <PrefValue T>
bool ReadPrefsValue(const XMLDocumentNode* entry, T& out, const T& otherwise);

/// Gives in `out` the map of `entry`, which may be null: an empty one when it is missing. False,
/// and an empty map, when one of its elements has no key or no valid value. V is bool or
/// std::string.
template <typename V>
bool ReadPrefsMap(const XMLDocumentNode* entry, std::map<std::string, V>& out);

}  // namespace esd

#endif  // ESD_PREFS_PREFS_DOCUMENT_H_
