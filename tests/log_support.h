// Log targets to write with, and the logs that they leave.
#ifndef TESTS_LOG_SUPPORT_H_
#define TESTS_LOG_SUPPORT_H_

#include <ctime>

#include "tests/test_support.h"
#include "welko/log_target_default.h"

namespace test {

/// A target at its first level, without a file, and an empty log for it.
struct LogTest : TreeTest {
  LogTest() { MakeEmptyLog(log); }
  std::string LastMessage() const { return Messages({ReadLines(log).back()})[0]; }
  const fs::path folder = top / "logs", log = folder / "own.log", user_logs = home / "Library/Logs";
  welko::LogTargetDefault target{"T"};
};

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

/// The messages of `log` behind its header block, one line each.
inline std::string MessagesAfterHeader(const fs::path& log) {
  return Text(Messages(LinesAfterHeader(ReadLog(log))));
}

}  // namespace test

#endif  // TESTS_LOG_SUPPORT_H_
