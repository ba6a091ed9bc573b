#include "esd/prefs/prefs_file.h"

#include <cerrno>
#include <optional>

#include "esd/util/replace_file.h"

namespace esd {

PrefsFile::State PrefsFile::Look(const std::string& path) const {
  const std::optional<platform::FileStamp> found = platform::StampOf(path);
  if (!found) return errno == ENOENT || errno == ENOTDIR ? State::kGone : State::kUnknown;
  const bool is_other = found->device != stamp_.device || found->inode != stamp_.inode;
  return stamp_.time == 0 || stamp_.time < found->time || is_other ? State::kChanged : State::kSame;
}

bool PrefsFile::Replace(const std::string& path, std::string_view text) {
  const std::optional<platform::FileStamp> stamp = ReplaceFile(path, text, stamp_.time);
  if (stamp) Remember(*stamp);
  return stamp.has_value();
}

}  // namespace esd
