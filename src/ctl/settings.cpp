#include "ctl/settings.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include "welko/log_redaction.h"

namespace ctl {
namespace {

bool IsListed(const Value::Array& list, const std::string& key) {
  return std::any_of(list.begin(), list.end(), [&](const Value& value) {
    const auto& members = std::get<Value::Object>(value.content());
    return std::get<std::string>(members.front().value.content()) == key;
  });
}

}  // namespace

const char* NameOf(Source source) {
  switch (source) {
    case Source::kUser:
      return "user";
    case Source::kAdministrator:
      return "administrator";
    case Source::kUninstallStamp:
      return "uninstall-stamp";
    case Source::kLaunchAgent:
      return "launch-agent";
    case Source::kDefault:
      break;
  }
  return "default";
}

template <esd::PrefValue T>
Value Shown(const std::string& key, const T& value) {
  if constexpr (std::is_same_v<T, std::string>) {
    return welko::RedactedValue(key, value);
  } else {
    return value;
  }
}

template <typename V>
Value Shown(const std::string& key, const std::map<std::string, V>& value) {
  Value::Object object;
  for (const auto& [name, element] : value) {
    Value shown = Shown(name, element);
    // Either key can be a credential's.
    if constexpr (std::is_same_v<V, std::string>) {
      shown = welko::RedactedValue(key, welko::RedactedValue(name, element));
    }
    object.push_back({welko::RedactedValue(key, name), std::move(shown)});
  }
  return object;
}

template <typename T>
std::string Describe(const Setting<T>& setting) {
  return setting.key + " = " + ToText(Shown(setting)) + " (" + NameOf(setting.source) + ")";
}

std::string ToText(const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value.content())) return "\"" + *text + "\"";
  std::string text = ToJson(value);
  text.pop_back();  // its newline
  return text;
}

std::string ShownLogPath(const std::string& path) {
  return welko::RedactedValue("StartupLogFile", path);
}

Value ShownLogPath(const std::optional<std::string>& path) {
  return path ? Value(ShownLogPath(*path)) : Value();
}

Source Settings::SourceOf(const std::string& key, bool is_in_file) const {
  if (const auto found = replacements_.find(key); found != replacements_.end()) {
    return found->second.source;
  }
  if (!is_in_file) return Source::kDefault;
  return forgotten_by_.value_or(file_source_);
}

template <esd::PrefValue T>
Setting<T> Settings::ReadEntry(const std::string& key, const esd::XMLDocumentNode* entry,
                               const T& otherwise) const {
  const bool is_in_file = entry != nullptr && !entry->GetData().empty();
  Setting<T> setting{key, std::nullopt, "", SourceOf(key, is_in_file)};
  std::optional<esd::XMLDocumentNode> replacement;
  if (forgotten_by_) entry = nullptr;
  if (const auto found = replacements_.find(key); found != replacements_.end()) {
    replacement.emplace(key).SetData(found->second.text);
    entry = &*replacement;
  }
  if (entry != nullptr) setting.text = entry->GetData();
  T value{};
  if (esd::ReadPrefsValue(entry, value, otherwise)) setting.value = std::move(value);
  return setting;
}

template <esd::PrefValue T>
Setting<T> Settings::Read(const std::string& key, const T& otherwise) {
  Setting<T> setting = ReadEntry(key, view_.FindEntry(key), otherwise);
  if (!IsListed(list_, key)) {
    list_.push_back(
        Value::Object{{"key", key}, {"value", Shown(setting)}, {"source", NameOf(setting.source)}});
  }
  return setting;
}

template <typename V>
Setting<std::map<std::string, V>> Settings::ReadMapEntry(const std::string& key,
                                                         const esd::XMLDocumentNode* entry) const {
  const bool is_in_file = entry != nullptr && !entry->children().empty();
  Setting<std::map<std::string, V>> setting{key, std::nullopt, "", SourceOf(key, is_in_file)};
  std::map<std::string, V> value;
  if (esd::ReadPrefsMap(forgotten_by_ ? nullptr : entry, value)) setting.value = std::move(value);
  return setting;
}

void Settings::Replace(const std::string& key, std::string text, Source source) {
  replacements_[key] = {std::move(text), source};
}

template Value Shown(const std::string&, const bool&);
template Value Shown(const std::string&, const int&);
template Value Shown(const std::string&, const unsigned long&);
template Value Shown(const std::string&, const std::string&);
template Value Shown(const std::string&, const std::map<std::string, bool>&);
template Value Shown(const std::string&, const std::map<std::string, std::string>&);
template std::string Describe(const Setting<bool>&);
template std::string Describe(const Setting<int>&);
template std::string Describe(const Setting<std::string>&);
template Setting<bool> Settings::Read(const std::string&, const bool&);
template Setting<int> Settings::Read(const std::string&, const int&);
template Setting<unsigned long> Settings::Read(const std::string&, const unsigned long&);
template Setting<std::string> Settings::Read(const std::string&, const std::string&);
template Setting<std::string> Settings::ReadEntry(const std::string&, const esd::XMLDocumentNode*,
                                                  const std::string&) const;
template Setting<std::map<std::string, bool>> Settings::ReadMapEntry(
    const std::string&, const esd::XMLDocumentNode*) const;
template Setting<std::map<std::string, std::string>> Settings::ReadMapEntry(
    const std::string&, const esd::XMLDocumentNode*) const;

}  // namespace ctl
