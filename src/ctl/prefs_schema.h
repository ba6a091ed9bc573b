// The keys of the preference files, with their types and defaults.
#ifndef CTL_PREFS_SCHEMA_H_
#define CTL_PREFS_SCHEMA_H_

#include <map>
#include <string>
#include <variant>
#include <vector>

#include "driver/admin_prefs.h"
#include "esd/prefs/updater_prefs.h"

namespace ctl {

/// A map of each kind.
///@{
using BoolMap = std::map<std::string, bool>;
using StringMap = std::map<std::string, std::string>;
///@}

/// The default of a key, whose type is the key's.
using PrefDefault = std::variant<bool, int, unsigned long, std::string, BoolMap, StringMap>;

/// One key.
struct SchemaKey {
  std::string name;
  PrefDefault otherwise;
};

/// One key whose type is known.
template <typename T>
struct TypedKey {
  std::string name;
  T otherwise;  ///< the default
};

/// The keys of the user's file, each by its name. The defaults that name folders are looked up when
/// the object is made.
class UserKeys : private esd::UpdaterPrefDefaults {
 public:
  using BoolPref = bool;
  using IntPref = int;
  using CountPref = unsigned long;
  using StringPref = std::string;
  using BoolMapPref = BoolMap;
  using StringMapPref = StringMap;

#define WAKERLYCTL_KEY(Type, key, ...) \
  TypedKey<Type> key() const { return {#key, Type{__VA_ARGS__}}; }
  VANTRE_UPDATER_PREFS(WAKERLYCTL_KEY)
#undef WAKERLYCTL_KEY
};

/// The key of the administrator's file.
inline TypedKey<bool> SuppressedKey() { return {wakerly::kSuppressedKey, false}; }

/// The keys of the user's file, in the order of VANTRE_UPDATER_PREFS, and of the administrator's.
///@{
std::vector<SchemaKey> UserSchema();
std::vector<SchemaKey> AdministratorSchema();
///@}

/// The name of the type of `otherwise`: "boolean", "integer", "unsigned", "string", "boolean-map"
/// or "string-map".
const char* TypeName(const PrefDefault& otherwise);

}  // namespace ctl

#endif  // CTL_PREFS_SCHEMA_H_
