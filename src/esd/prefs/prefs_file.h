// The file behind a preference store: which one it was and how old, when the store last loaded or
// saved it. It knows nothing of what the file holds.
#ifndef ESD_PREFS_PREFS_FILE_H_
#define ESD_PREFS_PREFS_FILE_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/file_attributes.h"

namespace esd {

/// One thread uses an object. Its time is 0 until Remember or Replace, and again after Forget.
class PrefsFile {
 public:
  /// What a look at the file tells, compared with what is remembered.
  enum class State {
    kSame,     ///< it has not changed
    kChanged,  ///< it is newer, or another one, or none is remembered
    kGone,     ///< there is none
    kUnknown,  ///< the system does not say
  };

  /// Looks at the file `path`, links followed.
  State Look(const std::string& path) const;

  /// Takes the file of that stamp for the one that was loaded.
  void Remember(const platform::FileStamp& stamp) { stamp_ = stamp; }
  void Forget() { stamp_ = {}; }
  /// The file's modification time, in nanoseconds since the epoch; 0 for none.
  std::uint64_t time() const { return stamp_.time; }
  /// The file's size in bytes; 0 for none.
  std::uint64_t size() const { return stamp_.size; }

  /// Makes `text` the content of the file `path`, as ReplaceFile does, with a time that nobody who
  /// loaded the file before has seen, and remembers it. On false the file and what is remembered
  /// are as before.
  bool Replace(const std::string& path, std::string_view text);

 private:
  platform::FileStamp stamp_;
};

}  // namespace esd

#endif  // ESD_PREFS_PREFS_FILE_H_
