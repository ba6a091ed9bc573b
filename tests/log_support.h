#ifndef TESTS_LOG_SUPPORT_H_
#define TESTS_LOG_SUPPORT_H_

#include <ctime>

#include "tests/test_support.h"
#include "welko/log_target_default.h"

namespace test {

inline void SetTimeZone(const std::string& zone) {
  setenv("TZ", zone.c_str(), 1);
  tzset();
}

inline bool OpenOn(welko::LogTargetDefault& target, const fs::path& log) {
  return target.SetLogFile(log.filename().c_str(), log.parent_path().c_str()) && target.Open();
}

/// Writes `message` as of `seconds` since the epoch, or now.
inline void Write(welko::LogTargetDefault& target, const std::string& message, int level = 30,
                  std::int64_t seconds = 0) {
  target.Log(level, {"a", "b", "c", "d", "e", "f"}, message.c_str(), nullptr, seconds * 1000, true);
}

/// The lines of `log` behind its header block, which is compared here.
inline Lines LinesAfterHeader(const fs::path& log) {
  Lines lines = ReadLog(log);
  lines.resize(std::max<std::size_t>(lines.size(), 6), "missing");
  EXPECT_EQ(Messages({lines.begin(), lines.begin() + 6}), HeaderMessages()) << log;
  return {lines.begin() + 6, lines.end()};
}

inline Lines MessagesAfterHeader(const fs::path& log) { return Messages(LinesAfterHeader(log)); }

}  // namespace test

#endif  // TESTS_LOG_SUPPORT_H_
