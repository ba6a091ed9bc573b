// Points in time as people and programs both read them.
#ifndef CTL_ISO_TIME_H_
#define CTL_ISO_TIME_H_

#include <cstdint>
#include <string>

namespace ctl {

/// `seconds` since the epoch in local time, with its zone (RFC 3339), such as
/// "2026-11-22T09:30:00+01:00".
std::string ToIsoTime(std::int64_t seconds);

}  // namespace ctl

#endif  // CTL_ISO_TIME_H_
