// The keys of the preference files, with their types and defaults.
#ifndef CTL_PREFS_SCHEMA_H_
#define CTL_PREFS_SCHEMA_H_

#include <map>
#include <string>
#include <variant>
#include <vector>

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
