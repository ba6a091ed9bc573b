// Preference objects: one key of a store with its type and its default.
#ifndef ESD_PREFS_BASIC_PREF_H_
#define ESD_PREFS_BASIC_PREF_H_

#include <string>
#include <utility>

#include "esd/prefs/prefs_writer.h"

namespace esd {

/// A single value; T is bool, int, unsigned long or std::string.
template <typename T>
class BasicPref {
 public:
  /// An object without a store; SetStore must come before Get and Set.
  BasicPref(std::string key, T otherwise) : key_(std::move(key)), default_(std::move(otherwise)) {}
  virtual ~BasicPref() = default;
  BasicPref(const BasicPref&) = delete;
  BasicPref& operator=(const BasicPref&) = delete;

  /// Uses `store`, which stays its owner's and must outlive this object.
  void SetStore(PrefsWriter* store) { store_ = store; }

  /// As the store's GetPref with the key and the default.
  virtual bool Get(T& out) { return store_->GetPref(key_, out, default_); }
  /// As the store's SetPref with the key.
  virtual bool Set(const T& value) { return store_->SetPref(key_, value); }
  /// Whether `value` equals the default; what is stored does not matter.
  virtual bool IsDefault(const T& value) { return value == default_; }

 private:
  PrefsWriter* store_ = nullptr;
  const std::string key_;
  const T default_;
};

}  // namespace esd

#endif  // ESD_PREFS_BASIC_PREF_H_
