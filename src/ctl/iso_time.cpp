#include "ctl/iso_time.h"

#include "welko/log_line.h"

namespace ctl {

std::string ToIsoTime(std::int64_t seconds) {
  constexpr std::size_t kMinutesOfZone = 2;
  std::string text = welko::FormatLocalTime("%Y-%m-%dT%H:%M:%S%z", seconds);
  text.insert(text.size() - kMinutesOfZone, ":");
  return text;
}

}  // namespace ctl
