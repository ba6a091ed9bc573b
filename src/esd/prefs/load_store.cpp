#include "esd/prefs/load_store.h"

#include <new>
#include <stdexcept>
#include <utility>

namespace esd {
namespace {

constexpr unsigned long kLockTimeout = 3000;

bool TryLoad(PrefsWriter& store, const std::string& path, ReloadAfter reload_after) {
  try {
    store.SetPrefsPath(path);
    return true;
  } catch (const std::invalid_argument&) {
    return false;
  } catch (const std::bad_alloc&) {
    throw;  // says nothing of the file
  } catch (...) {
    if (reload_after != ReloadAfter::kAnyException) throw;
    return false;
  }
}

}  // namespace

void LoadStore(PrefsWriter& store, const std::string& path, ReloadAfter reload_after,
               std::unique_ptr<ResourceLocker>& locker) {
  if (!TryLoad(store, path, reload_after)) {
    store.DeleteAllPrefs();
    store.SetPrefsPath(path);
  }
  auto made = std::make_unique<ResourceLocker>(path, kLockTimeout);
  store.SetLockPolicy(made.get());
  if (store.lock_policy() == made.get()) locker = std::move(made);
}

}  // namespace esd
