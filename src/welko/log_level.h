// The level scale of the log targets: a higher number is more severe.
#ifndef WELKO_LOG_LEVEL_H_
#define WELKO_LOG_LEVEL_H_

namespace welko {

/// The levels of the scale. A target whose threshold is kLogNone takes lines of that level alone.
///@{
inline constexpr int kLogTrace = 10;
inline constexpr int kLogDebug = 20;
inline constexpr int kLogInfo = 30;
inline constexpr int kLogWarn = 40;
inline constexpr int kLogError = 50;
inline constexpr int kLogFatal = 60;
inline constexpr int kLogNone = 70;
///@}

/// The name that lines carry for `level`; "ALL" for a number that is none of the scale's.
const char* LogLevelName(int level);

}  // namespace welko

#endif  // WELKO_LOG_LEVEL_H_
