#include "esd/prefs/map_pref.h"

#include <memory>
#include <optional>
#include <type_traits>

#include "esd/prefs/prefs_lock.h"
#include "esd/util/change_diff_type.h"

namespace esd {
namespace {

constexpr const char* kEntryName = "MapPrefEntry";
constexpr const char* kKeyAttribute = "MapPrefKey";

// Strings are kept unchanged: blanks are part of them.
template <typename To, typename From>
std::optional<To> Convert(const From& in) {
  if constexpr (std::is_same_v<From, To>) {
    return in;
  } else {
    To out{};
    if (!ChangeDiffTypeImpl<From, To>::ChangeType(in, out)) return std::nullopt;
    return out;
  }
}

const std::string* FindKey(const std::vector<std::pair<std::string, std::string>>& attributes) {
  for (const auto& [name, value] : attributes) {
    if (name == kKeyAttribute) return &value;
  }
  return nullptr;
}

}  // namespace

template <typename K, typename V>
bool MapPref<K, V>::Get(std::map<K, V>& out) {
  out.clear();
  XMLDocumentNode* node = nullptr;
  if (!store_->GetPref(key_, node)) return true;
  for (const auto& child : node->children()) {
    const auto attributes = child->GetAttributes();
    const std::string* const key = FindKey(attributes);
    const std::optional<V> value = Convert<V>(child->GetData());
    if (key == nullptr || !value) {
      out.clear();
      return false;
    }
    out[*key] = *value;
  }
  return true;
}

template <typename K, typename V>
bool MapPref<K, V>::Set(const std::map<K, V>& value) {
  PrefsLock lock(*store_);
  if (!lock.held()) return false;
  auto node = std::make_unique<XMLDocumentNode>(key_);
  for (const auto& [entry_key, entry_value] : value) {
    const std::optional<std::string> text = Convert<std::string>(entry_value);
    if (!text) return false;
    auto entry = std::make_unique<XMLDocumentNode>(kEntryName);
    entry->SetAttributeData(kKeyAttribute, entry_key);
    entry->SetData(*text);
    node->AddChild(entry.release());
  }
  return store_->SetPref(key_, std::move(node));
}

template class MapPref<std::string, bool>;
template class MapPref<std::string, std::string>;

}  // namespace esd
