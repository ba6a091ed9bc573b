// The preferences by which an administrator governs the updater of a machine.
#ifndef DRIVER_ADMIN_PREFS_H_
#define DRIVER_ADMIN_PREFS_H_

#include <memory>

#include "esd/prefs/basic_pref.h"
#include "esd/prefs/prefs_writer.h"
#include "esd/prefs/resource_locker.h"

namespace wakerly {

/// The key of the administrator's file.
inline constexpr char kSuppressedKey[] = "Suppressed";

/// The store of the administrator's preferences, which Wakerly only reads. One thread uses it.
class VantreUpdaterAdminPrefs : public esd::PrefsWriter {
 public:
  /// The process's one instance, made on the first call and destroyed when the process ends. Throws
  /// std::runtime_error when the folder of its file is not found; then the next call tries again.
  static VantreUpdaterAdminPrefs& GetInstance();

  ~VantreUpdaterAdminPrefs() override;

  /// Whether the updater is suppressed on this machine; false where the file does not say.
  esd::BasicPref<bool>& GetSuppressedPref() { return suppressed_; }

 private:
  VantreUpdaterAdminPrefs();

  esd::BasicPref<bool> suppressed_{kSuppressedKey, false};
  std::unique_ptr<esd::ResourceLocker> locker_;
};

}  // namespace wakerly

#endif  // DRIVER_ADMIN_PREFS_H_
