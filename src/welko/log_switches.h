// The switch files by which a person turns the log up: their presence in the logs folder counts.
#ifndef WELKO_LOG_SWITCHES_H_
#define WELKO_LOG_SWITCHES_H_

#include <optional>
#include <string>

namespace welko {

/// The name, before its extension, of a switch file for logs of every name.
inline constexpr char kCommonSwitch[] = "quib";

/// The path of the switch file that decides: the first in the console user's logs folder that
/// exists as a regular file, of `log_name` with the extension "trace" or "debug", then "quib.trace"
/// and "quib.debug". Nothing when there is none.
std::optional<std::string> FindLogSwitch(const std::string& log_name);

/// `level` as that switch file changes it: a trace file gives kLogTrace, a debug file lowers the
/// level to kLogDebug at most.
int ApplyLogSwitches(const std::string& log_name, int level);

/// Whether a "quib.trace" file in `folder` holds "keeplogs" and nothing after it: then old logs
/// stay.
bool KeepsOldLogs(const std::string& folder);

}  // namespace welko

#endif  // WELKO_LOG_SWITCHES_H_
