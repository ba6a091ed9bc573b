#include "esd/prefs/prefs_document.h"

#include <functional>
#include <type_traits>

#include "esd/util/change_diff_type.h"
#include "esd/xml/xml_search.h"

namespace esd {
namespace {

using ElementNamed = NodeName_t<std::string, std::equal_to<std::string>>;

// Strings are kept unchanged: blanks are part of them.
template <typename T>
bool Convert(const std::string& text, T& out) {
  if constexpr (std::is_same_v<T, std::string>) {
    out = text;
    return true;
  } else {
    return ChangeDiffTypeImpl<std::string, T>::ChangeType(text, out);
  }
}

const std::string* FindKey(const std::vector<std::pair<std::string, std::string>>& attributes) {
  for (const auto& [name, value] : attributes) {
    if (name == kMapKeyAttribute) return &value;
  }
  return nullptr;
}

}  // namespace

XMLDocumentNode* FindPrefsRoot(XMLDocumentNode* declaration, const std::string& root_name) {
  const auto found = SearchResult(declaration).Children(ElementNamed(root_name));
  return found.nodes().empty() ? nullptr : found.nodes().front();
}

XMLDocumentNode* FindPrefsEntry(const XMLDocumentNode* root, const std::string& key) {
  if (root == nullptr) return nullptr;
  for (const auto& entry : root->children()) {
    if (entry->GetName() == key) return entry.get();
  }
  return nullptr;
}

template <PrefValue T>
bool ReadPrefsValue(const XMLDocumentNode* entry, T& out, const T& otherwise) {
  const std::string text = entry != nullptr ? entry->GetData() : "";
  if (!text.empty()) return Convert(text, out);
  out = otherwise;
  return true;
}

template <typename V>
bool ReadPrefsMap(const XMLDocumentNode* entry, std::map<std::string, V>& out) {
  out.clear();
  if (entry == nullptr) return true;
  for (const auto& child : entry->children()) {
    const auto attributes = child->GetAttributes();
    const std::string* const key = FindKey(attributes);
    V value{};
    if (key == nullptr || !Convert(child->GetData(), value)) {
      out.clear();
      return false;
    }
    out[*key] = value;
  }
  return true;
}

template bool ReadPrefsValue(const XMLDocumentNode*, bool&, const bool&);
template bool ReadPrefsValue(const XMLDocumentNode*, int&, const int&);
template bool ReadPrefsValue(const XMLDocumentNode*, unsigned long&, const unsigned long&);
template bool ReadPrefsValue(const XMLDocumentNode*, std::string&, const std::string&);
template bool ReadPrefsMap(const XMLDocumentNode*, std::map<std::string, bool>&);
template bool ReadPrefsMap(const XMLDocumentNode*, std::map<std::string, std::string>&);

}  // namespace esd
