// The backups of a log file that grew too large.
//
// The backups of "Some.log" stand beside it and are named like "Some 2013-05-01 10-20-30.log".
#ifndef WELKO_LOG_BACKUPS_H_
#define WELKO_LOG_BACKUPS_H_

#include <cstdint>
#include <string>
#include <vector>

namespace welko {

/// The path of a backup of the log `path` made at `seconds` since the epoch.
std::string BackupPath(const std::string& path, std::int64_t seconds);

/// The paths of the backups of the log `path` that are there, the oldest first.
std::vector<std::string> FindBackups(const std::string& path);

/// Moves the text of the log `path` to a new file `backup` and leaves the log empty. False, with
/// the log as it was, when the backup exists already or cannot be written whole; a part of it is
/// removed.
bool MoveLogText(const std::string& path, const std::string& backup);

/// Removes from the folder of the log `path` whatever has a path below it that begins with the
/// log's name less its extension, except the log itself and the newest `count` of the backups that
/// were made in the `count` days up to `seconds` since the epoch. What cannot be removed stays.
void RemoveOldBackups(const std::string& path, std::int64_t seconds, std::size_t count);

}  // namespace welko

#endif  // WELKO_LOG_BACKUPS_H_
