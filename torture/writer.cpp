// Sets one key of a preference file many times, as one of several processes that do so.
//
//   writer FILE KEY TIMES
//
// The values are 1 to TIMES. The exit status is 1 when a value that was set is not found again.
#include <cstdlib>
#include <string>

#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/resource_locker.h"

int main(int count, char** arguments) {
  if (count != 4) return 2;
  const std::string path = arguments[1];
  const std::string key = arguments[2];
  const int times = std::atoi(arguments[3]);
  esd::ResourceLocker locker(path, 0);
  esd::PrefsWriter store(path, "Preferences");
  store.SetLockPolicy(&locker);
  for (int number = 1; number <= times; ++number) {
    // Whoever has waited for the lock in vain for a second is told so, and tries again.
    while (!store.SetPref(key, number)) {
    }
    int found = 0;
    while (!store.GetPref(key, found, 0)) {
    }
    if (found != number) return 1;
  }
  return 0;
}
