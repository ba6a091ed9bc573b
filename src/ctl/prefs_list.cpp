#include "ctl/prefs_list.h"

#include <map>
#include <set>
#include <utility>

namespace ctl {
namespace {

constexpr char kUnknownType[] = "unknown";

const esd::XMLDocumentNode::Children& EntriesOf(const PrefsView& view) {
  static const esd::XMLDocumentNode::Children none;
  return view.root() != nullptr ? view.root()->children() : none;
}

// How many entries there are of each key.
std::map<std::string, std::size_t> CountEntries(const PrefsView& view) {
  std::map<std::string, std::size_t> counts;
  for (const auto& entry : EntriesOf(view)) ++counts[entry->GetName()];
  return counts;
}

template <typename T>
ListedPref ToListed(const Setting<T>& setting) {
  return {setting.key, "", Shown(setting), nullptr, setting.source, setting.value.has_value(), 0};
}

template <esd::PrefValue T>
ListedPref Read(Settings& settings, const std::string& key, const T& otherwise) {
  return ToListed(settings.Read(key, otherwise));
}

template <typename V>
ListedPref Read(Settings& settings, const std::string& key, const std::map<std::string, V>&) {
  const auto setting = settings.ReadMap<V>(key);
  ListedPref listed = ToListed(setting);
  if (listed.is_valid) return listed;
  // Elements that are no V are shown as they are.
  const auto texts = settings.ReadMap<std::string>(key);
  listed.value = texts.value ? Shown(texts) : Value();
  return listed;
}

ListedPref ListKnown(const SchemaKey& key, Settings& settings) {
  return std::visit(
      [&](const auto& otherwise) {
        ListedPref listed = Read(settings, key.name, otherwise);
        listed.type = TypeName(key.otherwise);
        listed.otherwise = Shown(key.name, otherwise);
        return listed;
      },
      key.otherwise);
}

ListedPref ListUnknown(const esd::XMLDocumentNode& entry, Settings& settings) {
  const std::string key = entry.GetName();
  const auto map = settings.ReadMapEntry<std::string>(key, &entry);
  const bool is_map = !entry.children().empty() && map.value;
  ListedPref listed =
      is_map ? ToListed(map) : ToListed(settings.ReadEntry(key, &entry, std::string()));
  // It has no default, but may stand there without a text.
  if (listed.source == Source::kDefault) listed.source = settings.file_source();
  listed.type = kUnknownType;
  return listed;
}

}  // namespace

bool IsKnown(const ListedPref& pref) { return pref.type != kUnknownType; }

std::vector<ListedPref> ListPrefs(const std::vector<SchemaKey>& schema, const PrefsView& view,
                                  Settings& settings, const std::optional<std::string>& wanted) {
  const std::map<std::string, std::size_t> counts = CountEntries(view);
  const auto is_wanted = [&](const std::string& key) { return !wanted || *wanted == key; };
  std::vector<ListedPref> list;
  std::set<std::string> seen;
  for (const SchemaKey& key : schema) {
    seen.insert(key.name);
    if (is_wanted(key.name)) list.push_back(ListKnown(key, settings));
  }
  for (const auto& entry : EntriesOf(view)) {
    const std::string key = entry->GetName();
    if (is_wanted(key) && seen.insert(key).second) list.push_back(ListUnknown(*entry, settings));
  }
  for (ListedPref& listed : list) {
    const auto found = counts.find(listed.key);
    if (found != counts.end()) listed.entries = found->second;
  }
  return list;
}

}  // namespace ctl
