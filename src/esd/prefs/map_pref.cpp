#include "esd/prefs/map_pref.h"

#include <memory>

#include "esd/prefs/prefs_document.h"
#include "esd/prefs/prefs_lock.h"
#include "esd/util/change_diff_type.h"

namespace esd {
namespace {

// Strings are kept unchanged: blanks are part of them.
bool ToText(const std::string& in, std::string& out) {
  out = in;
  return true;
}
bool ToText(bool in, std::string& out) {
  return ChangeDiffTypeImpl<bool, std::string>::ChangeType(in, out);
}

}  // namespace

template <typename K, typename V>
bool MapPref<K, V>::Get(std::map<K, V>& out) {
  out.clear();
  XMLDocumentNode* node = nullptr;
  return !store_->GetPref(key_, node) || ReadPrefsMap(node, out);
}

template <typename K, typename V>
bool MapPref<K, V>::Set(const std::map<K, V>& value) {
  PrefsLock lock(*store_);
  if (!lock.held()) return false;
  auto node = std::make_unique<XMLDocumentNode>(key_);
  for (const auto& [entry_key, entry_value] : value) {
    std::string text;
    if (!ToText(entry_value, text)) return false;
    auto entry = std::make_unique<XMLDocumentNode>(kMapEntryName);
    entry->SetAttributeData(kMapKeyAttribute, entry_key);
    entry->SetData(text);
    node->AddChild(entry.release());
  }
  return store_->SetPref(key_, std::move(node));
}

template class MapPref<std::string, bool>;
template class MapPref<std::string, std::string>;

}  // namespace esd
