// The switch files by which a person turns the log up: their presence in the logs folder counts.
#ifndef WELKO_LOG_SWITCHES_H_
#define WELKO_LOG_SWITCHES_H_

#include <string>

namespace welko {

/// `level` as the switch files in the console user's logs folder change it. The first that exists
/// as a regular file decides: `log_name` with the extension "trace" or "debug", then "quib.trace"
/// and "quib.debug". A trace file gives kLogTrace, a debug file lowers the level to kLogDebug at
/// most.
int ApplyLogSwitches(const std::string& log_name, int level);

/// Whether a "quib.trace" file in `folder` holds "keeplogs" and nothing after it: then old logs
/// stay.
bool KeepsOldLogs(const std::string& folder);

}  // namespace welko

#endif  // WELKO_LOG_SWITCHES_H_
