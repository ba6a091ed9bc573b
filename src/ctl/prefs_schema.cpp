#include "ctl/prefs_schema.h"

#include "esd/prefs/updater_prefs.h"

namespace ctl {
namespace {

using esd::kDownloadFolderName;
using esd::kInstallerLogName;
using esd::kLibraryLogName;
using esd::kNotificationLogName;
using esd::kSilentNotificationLogName;
using esd::kStartupLogName;
using esd::kUpdaterLogName;

// The scope in which the table can be used.
class UserTable : private esd::UpdaterPrefDefaults {
 public:
  std::vector<SchemaKey> Keys() const {
    using BoolPref = bool;
    using IntPref = int;
    using CountPref = unsigned long;
    using StringPref = std::string;
    using BoolMapPref = BoolMap;
    using StringMapPref = StringMap;
    return {
#define WAKERLYCTL_KEY(Type, key, ...) {#key, Type{__VA_ARGS__}},
        VANTRE_UPDATER_PREFS(WAKERLYCTL_KEY)
#undef WAKERLYCTL_KEY
    };
  }
};

}  // namespace

std::vector<SchemaKey> UserSchema() { return UserTable().Keys(); }

std::vector<SchemaKey> AdministratorSchema() { return {{"Suppressed", false}}; }

const char* TypeName(const PrefDefault& otherwise) {
  // By the number of the alternative.
  constexpr const char* kNames[] = {"boolean", "integer",     "unsigned",
                                    "string",  "boolean-map", "string-map"};
  return kNames[otherwise.index()];
}

}  // namespace ctl
