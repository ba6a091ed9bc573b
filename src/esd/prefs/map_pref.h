// A preference object whose value is a map, kept as nested elements: one "MapPrefEntry" for each
// pair, with the key in its attribute "MapPrefKey" and the value as its text.
#ifndef ESD_PREFS_MAP_PREF_H_
#define ESD_PREFS_MAP_PREF_H_

#include <map>
#include <string>
#include <utility>

#include "esd/prefs/prefs_writer.h"

namespace esd {

/// K is std::string, V is bool or std::string.
template <typename K, typename V>
class MapPref {
 public:
  /// An object without a store; SetStore must come before Get and Set.
  explicit MapPref(std::string key) : key_(std::move(key)) {}
  virtual ~MapPref() = default;
  MapPref(const MapPref&) = delete;
  MapPref& operator=(const MapPref&) = delete;

  /// Uses `store`, which stays its owner's and must outlive this object.
  void SetStore(PrefsWriter* store) { store_ = store; }

  /// Gives the stored map in `out`, an empty one without an entry and when the store's lock cannot
  /// be taken. False, and an empty map, when one of its elements has no key or no valid value.
  virtual bool Get(std::map<K, V>& out);
  /// Stores `value` in the place of the former map, at the end of all entries. False as the store's
  /// SetPref.
  virtual bool Set(const std::map<K, V>& value);

 private:
  PrefsWriter* store_ = nullptr;
  const std::string key_;
};

}  // namespace esd

#endif  // ESD_PREFS_MAP_PREF_H_
