// Standard error, for what no log can take.
#ifndef PLATFORM_STANDARD_ERROR_H_
#define PLATFORM_STANDARD_ERROR_H_

#include <string_view>

namespace platform {

/// Writes `text` to standard error as it is. What cannot be written is lost without a word, and a
/// reader that has gone does not end the process: the SIGPIPE of this write is taken back, while
/// the signal's disposition and one that was pending before stay. Needs no memory.
void WriteToStandardError(std::string_view text);

}  // namespace platform

#endif  // PLATFORM_STANDARD_ERROR_H_
