// The layout of one line of a log file.
#ifndef WELKO_LOG_LINE_H_
#define WELKO_LOG_LINE_H_

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace welko {

/// The six texts that a caller gives along with a message; a null one prints as empty.
using LogContext = std::array<const char*, 6>;

/// The current time in milliseconds since the epoch.
std::int64_t NowMilliseconds();

/// `seconds` since the epoch in local time, formatted by strftime(3) with `format`.
std::string FormatLocalTime(const char* format, std::int64_t seconds);

/// The line for `message`, without its newline: time, "[LEVEL]", the six context texts, the thread
/// id and the message, with `separator` between each two. The elements that `masked_keys` names are
/// masked. A message that holds an access token is replaced whole, and its line carries the level
/// WARN. The time is `time_ms` in milliseconds since the epoch; `thread_id` is printed as it is.
std::string FormatLogLine(std::int64_t time_ms, int level, const LogContext& context,
                          std::string_view thread_id, std::string message,
                          const std::string& separator,
                          const std::vector<std::string>& masked_keys);

}  // namespace welko

#endif  // WELKO_LOG_LINE_H_
