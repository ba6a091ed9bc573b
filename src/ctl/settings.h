// The settings of a run as it would find them, each with where it comes from.
#ifndef CTL_SETTINGS_H_
#define CTL_SETTINGS_H_

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ctl/prefs_schema.h"
#include "ctl/prefs_view.h"
#include "ctl/value.h"
#include "esd/prefs/prefs_document.h"

namespace ctl {

/// Where a value comes from.
enum class Source {
  kUser,            ///< the user's preference file
  kAdministrator,   ///< the administrator's
  kDefault,         ///< no file
  kUninstallStamp,  ///< an uninstallation outdated the file's, which the run removes
  kLaunchAgent,     ///< the launch agent is missing, which the run records
};

/// Its name: "user", "administrator", "default", "uninstall-stamp" or "launch-agent".
const char* NameOf(Source source);

/// One key with its value.
template <typename T>
struct Setting {
  std::string key;
  std::optional<T> value;  ///< nothing where `text` is no T
  std::string text;        ///< as it stands in the file; empty where no file holds it
  Source source;
};

/// `value` as the log may show it behind `key`, masked where it is a credential or a token; a map
/// is an object, whose keys are looked at like values.
///@{
template <esd::PrefValue T>
Value Shown(const std::string& key, const T& value);
template <typename V>
Value Shown(const std::string& key, const std::map<std::string, V>& value);
///@}

/// The value of `setting`, or its text where that is no T, as the log may show it.
template <typename T>
Value Shown(const Setting<T>& setting) {
  return setting.value ? Shown(setting.key, *setting.value) : Shown(setting.key, setting.text);
}

/// A single value in a sentence: a text stands in quotes.
std::string ToText(const Value& value);

/// "key = value (source)", the value masked as the log does it.
template <typename T>
std::string Describe(const Setting<T>& setting);

/// The path of a log as it may be shown: masked as the value of StartupLogFile. Null for none.
///@{
std::string ShownLogPath(const std::string& path);
Value ShownLogPath(const std::optional<std::string>& path);
///@}

/// The settings of one preference file, and a list of those that were asked for.
class Settings {
 public:
  /// The settings that `view` holds; it must outlive this object. `file_source` is its own.
  Settings(const PrefsView& view, Source file_source) : view_(view), file_source_(file_source) {}

  /// The source of what the file holds.
  Source file_source() const { return file_source_; }

  /// The value of `key`, the replacement where there is one, else that of the file, else
  /// `otherwise` or the key's default. It goes to the list.
  ///@{
  template <esd::PrefValue T>
  Setting<T> Read(const std::string& key, const T& otherwise);
  template <esd::PrefValue T>
  Setting<T> Read(const TypedKey<T>& key) {
    return Read(key.name, key.otherwise);
  }
  ///@}

  /// The map of `key`, an empty one where no file holds it. It does not go to the list.
  template <typename V>
  Setting<std::map<std::string, V>> ReadMap(const std::string& key) const {
    return ReadMapEntry<V>(key, view_.FindEntry(key));
  }

  /// The same of the first entry called `key` where that is known: `entry`, null for none. Nothing
  /// goes to the list.
  ///@{
  template <esd::PrefValue T>
  Setting<T> ReadEntry(const std::string& key, const esd::XMLDocumentNode* entry,
                       const T& otherwise) const;
  template <typename V>
  Setting<std::map<std::string, V>> ReadMapEntry(const std::string& key,
                                                 const esd::XMLDocumentNode* entry) const;
  ///@}

  /// From here on `key` has the value that stands in a file as `text`.
  void Replace(const std::string& key, std::string text, Source source);
  /// From here on no key has what the file holds: each that it does hold counts as `source`'s.
  void ForgetFile(Source source) { forgotten_by_ = source; }

  /// Each setting that was read, in that order, as an object with the members "key", "value" and
  /// "source". Credentials are masked.
  const Value::Array& list() const { return list_; }

 private:
  struct Replacement {
    std::string text;
    Source source;
  };

  Source SourceOf(const std::string& key, bool is_in_file) const;

  const PrefsView& view_;
  const Source file_source_;
  std::optional<Source> forgotten_by_;
  std::map<std::string, Replacement> replacements_;
  Value::Array list_;
};

}  // namespace ctl

#endif  // CTL_SETTINGS_H_
