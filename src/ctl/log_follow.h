// Printing what a log gets, as it comes.
#ifndef CTL_LOG_FOLLOW_H_
#define CTL_LOG_FOLLOW_H_

#include <string>

#include "ctl/log_tail.h"

namespace ctl {

/// Prints each new line of the log `path` behind `tail`, looking four times a second, with a line
/// above it where its run is another one than that of the line before, and with the run's headline
/// once it is over. Goes on where the log rolls over, is emptied, removed or replaced. Ends when
/// the reader of standard output has gone; false, with errno telling why, when that fails
/// otherwise.
bool FollowLog(const std::string& path, LogTail tail);

}  // namespace ctl

#endif  // CTL_LOG_FOLLOW_H_
