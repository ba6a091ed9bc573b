#include "welko/log_line.h"

#include <chrono>
#include <ctime>
#include <limits>

#include "welko/log_level.h"
#include "welko/log_redaction.h"

namespace welko {
namespace {

// The text of a second, which many lines share and which costs more than the rest of a line. As
// "%x %X" prints in the C locale, which a loaded library may have exchanged for another.
const char* SecondText(std::int64_t seconds) {
  // Nothing that is destroyed before the last line is written.
  thread_local std::int64_t known = std::numeric_limits<std::int64_t>::min();
  thread_local char text[sizeof "11/21/26 12:16:09"] = "";
  if (seconds != known) {
    FormatLocalTime("%m/%d/%y %H:%M:%S", seconds).copy(text, sizeof text - 1);
    known = seconds;
  }
  return text;
}

}  // namespace

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
                          std::string_view thread_id, std::string message,
                          const std::string& separator,
                          const std::vector<std::string>& masked_keys) {
  if (Redact(message, masked_keys)) level = kLogWarn;
  constexpr std::size_t kFieldsBeforeMessage = 160;  // rarely more
  std::string line;
  line.reserve(kFieldsBeforeMessage + message.size());
  line = SecondText(time_ms / 1000);
  line.append(":").append(std::to_string(1000 + time_ms % 1000), 1);  // three digits
  line.append(separator).append("[").append(LogLevelName(level)).append("]");
  for (const char* text : context) line.append(separator).append(text != nullptr ? text : "");
  line.append(separator).append(thread_id);
  line.append(separator).append(message);
  return line;
}

}  // namespace welko
