// The preferences of one file, each as it is shown.
#ifndef CTL_PREFS_LIST_H_
#define CTL_PREFS_LIST_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ctl/prefs_schema.h"
#include "ctl/prefs_view.h"
#include "ctl/settings.h"
#include "ctl/value.h"

namespace ctl {

/// One key, its values masked as the log does it.
struct ListedPref {
  std::string key;
  std::string type;         ///< as TypeName tells it, or "unknown"
  Value value;              ///< the text where it is no value of that type; null for such a map
  Value otherwise;          ///< the default; null where the type is unknown
  Source source;            ///< where the value comes from
  bool is_valid = true;     ///< whether the value is one of the type
  std::size_t entries = 0;  ///< how many the file has under this key, of which the first counts
};

/// Whether the schema has the key.
bool IsKnown(const ListedPref& pref);

/// The keys of `schema`, then those that the file of `view` holds beyond it, in its own order;
/// of all these only `wanted`, if that is given. `settings` are those of `view`.
std::vector<ListedPref> ListPrefs(const std::vector<SchemaKey>& schema, const PrefsView& view,
                                  Settings& settings, const std::optional<std::string>& wanted);

}  // namespace ctl

#endif  // CTL_PREFS_LIST_H_
