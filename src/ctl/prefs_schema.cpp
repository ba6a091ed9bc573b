#include "ctl/prefs_schema.h"

namespace ctl {

std::vector<SchemaKey> UserSchema() {
  const UserKeys keys;
  return {
#define WAKERLYCTL_KEY(Type, key, ...) {#key, keys.key().otherwise},
      VANTRE_UPDATER_PREFS(WAKERLYCTL_KEY)
#undef WAKERLYCTL_KEY
  };
}

std::vector<SchemaKey> AdministratorSchema() {
  const TypedKey<bool> key = SuppressedKey();
  return {{key.name, key.otherwise}};
}

const char* TypeName(const PrefDefault& otherwise) {
  // By the number of the alternative.
  constexpr const char* kNames[] = {"boolean", "integer",     "unsigned",
                                    "string",  "boolean-map", "string-map"};
  return kNames[otherwise.index()];
}

}  // namespace ctl
