// Replacing the content of a file as a whole or not at all.
//
// The new content goes to a new file in the same folder, which takes the place of the old one when
// it is on the disk. Whoever looks sees the old content or the new one, also after a crash of the
// process or a failure of the power.
#ifndef ESD_UTIL_REPLACE_FILE_H_
#define ESD_UTIL_REPLACE_FILE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_attributes.h"

namespace esd {

/// Makes `bytes` the content of the regular file `path`, and gives the stamp of the file that is
/// there then. Links are followed to the end of their chain and stay; a missing file, at the end of
/// a link as well, is made with mode 0666 less the umask. The file keeps its mode, owner, group,
/// access control list and extended attributes; its time is later than it was, and than
/// `later_than` in nanoseconds since the epoch. Nothing, with the file as it was, when it cannot be
/// written or is no regular file.
///
/// Where a new file cannot take the old one's place (no right to make or rename one in the folder,
/// a mount point, other hard links, rights or attributes that cannot be copied for another reason
/// than want of room), the old one is written over: a failure then puts the former bytes and time
/// back, as far as they could be read, but a crash meanwhile leaves something in between.
std::optional<platform::FileStamp> ReplaceFile(const std::string& path, std::string_view bytes,
                                               std::uint64_t later_than);

/// Removes the new files of replacements of `path` that were killed. Call while nobody replaces it:
/// a replacement at work would fail.
void RemoveLeftovers(const std::string& path);

}  // namespace esd

#endif  // ESD_UTIL_REPLACE_FILE_H_
