// Loading a preference store from its file, and the lock that guards the file from then on.
#ifndef ESD_PREFS_LOAD_STORE_H_
#define ESD_PREFS_LOAD_STORE_H_

#include <memory>
#include <string>

#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/resource_locker.h"

namespace esd {

/// The exceptions of a load after which the file is removed and loaded once more. Any other, one of
/// the second load, and in any case std::bad_alloc, reaches the caller.
enum class ReloadAfter { kAnyException, kInvalidArgument };

/// Points `store` at the file `path` and loads it, then makes a lock for the file and installs it
/// as the store's lock policy. On return `locker` owns the new lock, unless the policy in use was
/// holding its own: then both stay as they were. A first load runs without a lock, so that a
/// malformed file stays as it is. When something is thrown, `locker` is untouched.
void LoadStore(PrefsWriter& store, const std::string& path, ReloadAfter reload_after,
               std::unique_ptr<ResourceLocker>& locker);

}  // namespace esd

#endif  // ESD_PREFS_LOAD_STORE_H_
