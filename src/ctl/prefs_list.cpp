#include "ctl/prefs_list.h"

#include <algorithm>
#include <utility>

namespace ctl {
namespace {

constexpr char kUnknownType[] = "unknown";

const esd::XMLDocumentNode::Children& EntriesOf(const PrefsView& view) {
  static const esd::XMLDocumentNode::Children none;
  return view.root() != nullptr ? view.root()->children() : none;
}

std::size_t CountEntries(const PrefsView& view, const std::string& key) {
  const auto& entries = EntriesOf(view);
  return static_cast<std::size_t>(std::count_if(
      entries.begin(), entries.end(), [&](const auto& entry) { return entry->GetName() == key; }));
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
  const auto map = settings.ReadMap<std::string>(key);
  const bool is_map = !entry.children().empty() && map.value;
  ListedPref listed = is_map ? ToListed(map) : Read<std::string>(settings, key, "");
  // It has no default, but may stand there without a text.
  if (listed.source == Source::kDefault) listed.source = settings.file_source();
  listed.type = kUnknownType;
  return listed;
}

bool IsListed(const std::vector<ListedPref>& list, const std::string& key) {
  return std::any_of(list.begin(), list.end(),
                     [&](const ListedPref& listed) { return listed.key == key; });
}

}  // namespace

std::vector<ListedPref> ListPrefs(const std::vector<SchemaKey>& schema, const PrefsView& view,
                                  Settings& settings, const std::optional<std::string>& wanted) {
  std::vector<ListedPref> list;
  for (const SchemaKey& key : schema) {
    if (!wanted || *wanted == key.name) list.push_back(ListKnown(key, settings));
  }
  for (const auto& entry : EntriesOf(view)) {
    const std::string key = entry->GetName();
    const bool is_wanted = !wanted || *wanted == key;
    if (is_wanted && !IsListed(list, key)) list.push_back(ListUnknown(*entry, settings));
  }
  for (ListedPref& listed : list) listed.entries = CountEntries(view, listed.key);
  return list;
}

}  // namespace ctl
