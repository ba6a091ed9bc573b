#include "welko/log_line.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include "welko/log_level.h"
#include "welko/log_redaction.h"

namespace welko {

std::int64_t NowMilliseconds() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

std::string FormatLocalTime(const char* format, std::int64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm local{};
  localtime_r(&time, &local);
  char text[64];
  return std::string(text, std::strftime(text, sizeof text, format, &local));
}

std::string FormatLogLine(std::int64_t time_ms, int level, const LogContext& context,
                          const std::string& thread_id, std::string message,
                          const std::string& separator) {
  if (HoldsToken(message)) {
    message = "Found access/device token. Log skipped.";
    level = kLogWarn;
  } else {
    MaskCredentials(message);
  }
  char milliseconds[8];
  std::snprintf(milliseconds, sizeof milliseconds, ":%.3d", static_cast<int>(time_ms % 1000));

  // As "%x %X" prints in the C locale, which a loaded library may have exchanged for another.
  std::string line = FormatLocalTime("%m/%d/%y %H:%M:%S", time_ms / 1000) + milliseconds;
  line.append(separator).append("[").append(LogLevelName(level)).append("]");
  for (const char* text : context) line.append(separator).append(text != nullptr ? text : "");
  line.append(separator).append(thread_id);
  line.append(separator).append(message);
  return line;
}

}  // namespace welko
