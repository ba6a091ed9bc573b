#include "welko/log_level.h"

namespace welko {

const char* LogLevelName(int level) {
  switch (level) {
    case kLogTrace:
      return "TRACE";
    case kLogDebug:
      return "DEBUG";
    case kLogInfo:
      return "INFO";
    case kLogWarn:
      return "WARN";
    case kLogError:
      return "ERROR";
    case kLogFatal:
      return "FATAL";
    case kLogNone:
      return "NONE";
    default:
      return "ALL";
  }
}

}  // namespace welko
